#pragma once

#include "security/KeychainServicing.h"
#include "security/LegacySecretListing.h"
#include "security/SecretStoring.h"
#include "security/UserPresenceConfirming.h"

#include <map>
#include <mutex>
#include <set>

namespace morvane {

// The system's only door to the platform's secrets: the items of one service, with a small read cache so that
// the data key is not fetched for every sealed field.
//
// Any thread. Two threads may both miss the cache and both read; the later insert wins.
class KeychainService final : public KeychainServicing, public LegacySecretListing {
public:
    // `store` and `presence` outlive the service.
    KeychainService(QString service, SecretStoring &store, UserPresenceConfirming &presence);

    void save(const QString &value, const QString &account) override;
    [[nodiscard]] std::optional<QString> read(const QString &account) override;
    void remove(const QString &account) override;
    int deleteAll() noexcept override;
    // A locked keyring is unlocked first, through its own prompt.
    [[nodiscard]] std::optional<QString> read(const QString &account, const QString &reason,
                                              std::stop_token stop) override;
    void setUserPresence(const QString &value, const QString &account, UserPresence presence) override;
    [[nodiscard]] bool requiresUserPresence(const QString &account) noexcept override;
    void clearCache() override;

    [[nodiscard]] std::vector<Secret> secretsOf(const QString &service) override;
    void removeSecret(const QString &service, const QString &account) override;

    // Lists the service once, so that later reads of what takes no prompt, and of what is not there, do not
    // leave the process. Throws KeychainError.
    void warmUp();

private:
    struct Prompt {
        QString reason;
        std::stop_token stop;
    };
    struct Remembered {
        bool isKnown = false;
        std::optional<QString> value; // nothing: known not to be there
    };

    [[nodiscard]] std::optional<QString> readItem(const QString &account, const Prompt *prompt);
    [[nodiscard]] std::optional<SecretStoring::Item> findItem(const QString &account, const Prompt *prompt);
    void confirmPresence(const Prompt *prompt);
    void putBehindPresence(const QString &value, const QString &account);
    void takeFromPresence(const QString &value, const QString &account);
    [[nodiscard]] int removeItems() noexcept;
    [[nodiscard]] bool removeElsewhere() noexcept;
    [[nodiscard]] bool removeFormerService(const QString &service) noexcept;

    [[nodiscard]] Remembered remembered(const QString &account) const;
    void remember(const QString &account, const QString &value);
    void forget(const QString &account);

    const QString m_service;
    SecretStoring &m_store;
    UserPresenceConfirming &m_presence;
    mutable std::mutex m_mutex;         // never held across a call to the store
    std::map<QString, QString> m_cache; // guarded by m_mutex
    // What the last listing found and left out of the cache; none before a listing. Guarded by m_mutex.
    std::optional<std::set<QString>> m_leftOut;
};

} // namespace morvane
