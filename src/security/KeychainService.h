#pragma once

#include "security/KeychainServicing.h"
#include "security/LegacySecretListing.h"
#include "security/SecretStoring.h"
#include "security/UserPresenceConfirming.h"

#include <map>
#include <mutex>

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
    [[nodiscard]] std::optional<QString> read(const QString &account, const QString &reason) override;
    void setUserPresence(const QString &value, const QString &account, UserPresence presence) override;
    [[nodiscard]] bool requiresUserPresence(const QString &account) noexcept override;
    void clearCache() override;

    [[nodiscard]] std::vector<Secret> secretsOf(const QString &service) override;
    void removeSecret(const QString &service, const QString &account) override;

    // Reads every item that takes no prompt into the cache, so that later reads do not leave the process.
    void warmUp();

private:
    enum class Prompt { Never, Allowed };

    [[nodiscard]] std::optional<QString> readItem(const QString &account, const QString &reason,
                                                  Prompt prompt);
    [[nodiscard]] std::optional<SecretStoring::Item> findItem(const QString &account, Prompt prompt);
    void confirmPresence(const QString &reason, Prompt prompt);
    void putBehindPresence(const QString &value, const QString &account);
    void takeFromPresence(const QString &value, const QString &account);
    [[nodiscard]] bool removeFormerService(const QString &service) noexcept;

    [[nodiscard]] std::optional<QString> cached(const QString &account) const;
    void remember(const QString &account, const QString &value);
    void forget(const QString &account);

    const QString m_service;
    SecretStoring &m_store;
    UserPresenceConfirming &m_presence;
    mutable std::mutex m_mutex;         // never held across a call to the store
    std::map<QString, QString> m_cache; // guarded by m_mutex
};
