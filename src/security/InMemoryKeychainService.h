#pragma once

#include "security/KeychainError.h"
#include "security/KeychainServicing.h"
#include "security/LegacySecretListing.h"

#include <map>
#include <mutex>
#include <set>

namespace morvane {

// A keychain that forgets everything with the process. Any thread.
class InMemoryKeychainService : public KeychainServicing, public LegacySecretListing {
public:
    void save(const QString &value, const QString &account) override;
    [[nodiscard]] std::optional<QString> read(const QString &account) override;
    void remove(const QString &account) override;
    int deleteAll() noexcept override;
    [[nodiscard]] std::optional<QString> read(const QString &account, const QString &reason,
                                              std::stop_token stop) override;
    void setUserPresence(const QString &value, const QString &account, UserPresence presence) override;
    [[nodiscard]] bool requiresUserPresence(const QString &account) noexcept override;
    void clearCache() override;

    [[nodiscard]] std::vector<Secret> secretsOf(const QString &service) override;
    void removeSecret(const QString &service, const QString &account) override;

    // While set, save, read and remove throw it and touch nothing.
    void setFailure(std::optional<KeychainError> failure);

    // An item of an older build.
    void addSecret(const QString &service, const Secret &secret);

private:
    void throwFailure() const;

    mutable std::mutex m_mutex;
    std::optional<KeychainError> m_failure;                      // guarded by m_mutex
    std::map<QString, QString> m_storage;                        // guarded by m_mutex
    std::set<QString> m_behindPresence;                          // guarded by m_mutex
    std::set<QString> m_shown;                                   // read with a prompt; guarded by m_mutex
    std::map<QString, std::map<QString, QString>> m_olderBuilds; // by service; guarded by m_mutex
};

} // namespace morvane
