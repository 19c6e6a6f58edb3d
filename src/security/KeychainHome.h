#pragma once

#include "security/KeyFile.h"
#include "security/KeychainState.h"
#include "security/SecretStoring.h"

#include <atomic>
#include <functional>

namespace morvane {

struct KeychainOpening {
    KeychainState state = KeychainState::Opening;
    bool dataKeyBehindPresence = false;
    bool dataKeyWrapped = false; // under a passphrase of the person's
};

// Chooses where the secrets live, once for each run: in the desktop's keyring, or, where none answers, in a
// private file. A file that was chosen before stays chosen until an open keyring takes its secrets over.
// Until open() has chosen, every other call throws NotAvailable.
//
// When a place is ready it holds a usable data key: one is made where there is none. A key that must exist is
// never replaced, neither by a new one nor by choosing another place: with no keyring and no file the state
// is Unavailable, and nothing is made.
class KeychainHome final : public SecretStoring {
public:
    // `keyring` outlives the home. `dataAccount` names the secret that seals the person's data.
    KeychainHome(SecretStoring &keyring, const QString &keyFilePath, QString dataAccount);

    // Waits for the keyring, and for the person where it is locked; never on the GUI thread. `progress` hears
    // of the wait, on the calling thread. One call at a time; may be repeated when the state allows a retry.
    // Throws CancelledError once `stop` is triggered.
    KeychainOpening open(const QString &service, KeyExpectation expectation,
                         const std::function<void(KeychainState)> &progress, std::stop_token stop);

    // The file, whatever the keyring says, because the person chose it. For data that has no key yet.
    KeychainOpening openInFile(const QString &service);

    [[nodiscard]] Condition condition(const QString &service) override;
    void unlock(const QString &service, std::stop_token stop) override;
    [[nodiscard]] std::optional<Item> find(const QString &service, const QString &account) override;
    [[nodiscard]] std::vector<Item> items(const QString &service) override;
    void add(const QString &service, const Item &item) override;
    bool update(const QString &service, const QString &account, const QByteArray &value) override;
    bool remove(const QString &service, const QString &account) override;
    bool removeElsewhere(const QString &service) override;
    [[nodiscard]] bool keepsPresence() const override;

private:
    enum class Copy { Missing, Same, Different };
    enum class Keyring { Open, Dismissed, Silent, Absent };

    [[nodiscard]] Keyring reachKeyring(const QString &service,
                                       const std::function<void(KeychainState)> &progress,
                                       std::stop_token stop);
    [[nodiscard]] Condition patientCondition(const QString &service, const std::stop_token &stop);
    [[nodiscard]] KeychainOpening openFile(const QString &service, KeyExpectation expectation);
    [[nodiscard]] KeychainOpening openWithoutKeyring(Keyring keyring, const QString &service,
                                                     KeyExpectation expectation);
    [[nodiscard]] KeychainOpening settle(SecretStoring &place, KeychainState ready, const QString &service,
                                         KeyExpectation expectation);
    [[nodiscard]] bool fileHoldsKey(const QString &service);
    [[nodiscard]] std::optional<Item> findKey(SecretStoring &place, const QString &service) const;
    void makeKey(SecretStoring &place, const QString &service) const;
    [[nodiscard]] bool takeOverFile();
    [[nodiscard]] bool addVerified(const std::vector<KeyFileFormat::Entry> &entries);
    [[nodiscard]] Copy compareWithKeyring(const KeyFileFormat::Entry &entry);
    [[nodiscard]] SecretStoring &place() const;

    SecretStoring &m_keyring;
    KeyFile m_file;
    const QString m_dataAccount;
    std::atomic<SecretStoring *> m_place = nullptr; // m_keyring or m_file, once chosen
};

} // namespace morvane
