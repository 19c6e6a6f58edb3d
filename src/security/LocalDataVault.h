#pragma once

#include "security/FieldSealing.h"
#include "security/KeychainServicing.h"
#include "security/Passphrase.h"
#include "security/SealingTrouble.h"
#include "utils/bytes/Argon2id.h"
#include "utils/bytes/SecretBytes.h"

#include <QByteArray>
#include <QStringList>

#include <exception>
#include <functional>
#include <mutex>

namespace morvane {

// Owns the local data key and everything that is sealed with it. While it is locked the key is not handed
// out, so nothing is sealed and nothing is opened.
//
// One per process, outliving every store. Any thread may seal and open. The key is fetched for each operation
// and wiped after it; only the keychain's cache holds its text in between, or, where the keychain has the key
// under a passphrase alone, this object the key that the passphrase opened.
class LocalDataVault final : public FieldSealing {
public:
    static const QString keyAccount; // "local-data-key"

    class Locked final : public std::exception {
    public:
        [[nodiscard]] const char *what() const noexcept override { return "the vault is locked"; }
    };

    // A key must exist and does not: what was sealed stays as it is, and no new key takes its place.
    class KeyMissing final : public std::exception {
    public:
        [[nodiscard]] const char *what() const noexcept override { return "the data key is missing"; }
    };

    // `keychain` outlives the vault.
    explicit LocalDataVault(KeychainServicing &keychain);

    // The single gate. Throws Locked, KeychainError or KeyMissing; Locked as well while the key stands under
    // a passphrase that nobody has given. A missing or unusable key is replaced by a new one unless
    // requireExistingKey() was called.
    [[nodiscard]] SecretBytes key() const;

    // Whether the keychain holds a usable key. A refusal counts as one: it may hide it. Never prompts.
    [[nodiscard]] bool mayHoldKey() const;

    // From now on a missing key is an error. destroyKey() lifts it.
    void requireExistingKey();

    // Fields. No value while locked. Without a key the text comes back as it is: a readable value is better
    // than lost words.
    [[nodiscard]] std::optional<QString> seal(const QString &text) const override;
    [[nodiscard]] QString open(const QString &text) const override;

    // Files. Sealing throws what key() throws, or std::runtime_error from the cipher.
    [[nodiscard]] QByteArray seal(const QByteArray &data) const;

    // Contents that are not sealed come back as they are. No value: sealed, and this key does not open it.
    [[nodiscard]] std::optional<QByteArray> open(const QByteArray &data) const;

    // Seals `data` and writes it. While locked throws Locked and leaves the file alone; when sealing fails
    // the file is written in the clear. Throws FileError.
    void writeSealed(const QByteArray &data, const QString &path) const;

    // Atomic, mode 0600, folders made as needed. Throws FileError.
    static void writePrivate(const QByteArray &data, const QString &path);

    // What kept the latest text or file from being sealed, so that it was stored readable; None when it was
    // sealed. A locked vault stores nothing and is no trouble.
    [[nodiscard]] SealingTrouble trouble() const;

    // Hears of each change of it, on the thread that seals, and calls nothing of the vault. Null takes it
    // back.
    void setTroubleObserver(std::function<void()> observer);

    // Never throws: a key that cannot be removed stays. Refused under a test host.
    void destroyKey();

    // Re-stores the key with or without user presence, under its passphrase if it is under one. Throws what
    // key() throws, or KeychainError when the keychain refuses; the key is then where it was.
    void moveKey(UserPresence presence);

    // Puts the key under a passphrase, in the place of the bare key or of another passphrase. The keychain
    // gets one form for the other in a single write, and this run keeps the key until the next lock. Throws
    // what key() and WrappedKey::wrap() throw, or KeychainError; the key is then as it was. Takes seconds.
    void wrapKey(const Passphrase &passphrase, const Argon2id::Cost &cost);
    // Takes it out again; throws likewise.
    void bareKey();
    // The key that stands under `passphrase`, locked or not; nothing when it is another one. Throws
    // KeychainError (a prompt would be needed), KeyMissing, or what WrappedKey::unwrap() throws.
    [[nodiscard]] std::optional<SecretBytes> unwrapKey(const Passphrase &passphrase) const;

    // Locking also empties the keychain's cache, so that no key text stays in memory.
    void lock();
    // With the key that a passphrase opened, where one guards it.
    void unlock(std::optional<SecretBytes> openedKey = std::nullopt);
    [[nodiscard]] bool isLocked() const;

    // Seals the stores that an older build left in the clear below the application-support directory `base`
    // (the user's own when empty) and returns their names. Callers skip it under a test host.
    [[nodiscard]] QStringList sealLeftovers(const QString &base = {}) const;

private:
    [[nodiscard]] SecretBytes makeKey() const;
    [[nodiscard]] bool sealLeftover(const QString &path) const;
    void note(SealingTrouble trouble) const;
    [[nodiscard]] std::optional<SecretBytes> keyFrom(QString &&storedText) const;
    [[nodiscard]] std::optional<SecretBytes> openedKey() const;
    void replaceKeyText(const QString &text);
    void lockAgain();

    KeychainServicing &m_keychain;
    mutable std::mutex m_mutex;                              // never held across a call to the keychain
    bool m_isLocked = false;                                 // guarded by m_mutex
    bool m_keyMustExist = false;                             // guarded by m_mutex
    std::optional<SecretBytes> m_openedKey;                  // never while locked; guarded by m_mutex
    mutable SealingTrouble m_trouble = SealingTrouble::None; // guarded by m_mutex
    std::function<void()> m_troubleChanged;                  // guarded by m_mutex
    mutable std::mutex m_creation;                           // one thread at a time makes the first key
};

} // namespace morvane
