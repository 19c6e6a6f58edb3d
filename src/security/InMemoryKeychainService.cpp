#include "security/InMemoryKeychainService.h"

namespace morvane {

void InMemoryKeychainService::throwFailure() const
{
    const std::lock_guard lock(m_mutex);
    if (m_failure)
        throw KeychainError(*m_failure);
}

void InMemoryKeychainService::save(const QString &value, const QString &account)
{
    throwFailure();
    const std::lock_guard lock(m_mutex);
    m_storage[account] = value;
}

std::optional<QString> InMemoryKeychainService::read(const QString &account)
{
    throwFailure();
    const std::lock_guard lock(m_mutex);
    if (m_behindPresence.contains(account) && !m_shown.contains(account))
        throw KeychainError(KeychainError::Operation::Read, KeychainStatus::InteractionNotAllowed);
    const auto found = m_storage.find(account);
    return found == m_storage.end() ? std::nullopt : std::optional(found->second);
}

std::optional<QString> InMemoryKeychainService::read(const QString &account, const QString &, std::stop_token)
{
    throwFailure();
    {
        const std::lock_guard lock(m_mutex);
        m_shown.insert(account);
    }
    return read(account);
}

void InMemoryKeychainService::remove(const QString &account)
{
    throwFailure();
    const std::lock_guard lock(m_mutex);
    m_storage.erase(account);
    m_behindPresence.erase(account);
    m_shown.erase(account);
}

int InMemoryKeychainService::deleteAll() noexcept
{
    const std::lock_guard lock(m_mutex);
    const auto count = static_cast<int>(m_storage.size());
    m_storage.clear();
    m_behindPresence.clear();
    m_shown.clear();
    return count;
}

void InMemoryKeychainService::setUserPresence(const QString &value, const QString &account,
                                              UserPresence presence)
{
    throwFailure();
    const std::lock_guard lock(m_mutex);
    m_storage[account] = value;
    m_shown.insert(account);
    if (presence == UserPresence::Required)
        m_behindPresence.insert(account);
    else
        m_behindPresence.erase(account);
}

bool InMemoryKeychainService::requiresUserPresence(const QString &account) noexcept
{
    const std::lock_guard lock(m_mutex);
    return m_behindPresence.contains(account);
}

void InMemoryKeychainService::clearCache()
{
    const std::lock_guard lock(m_mutex);
    m_shown.clear();
}

std::vector<LegacySecretListing::Secret> InMemoryKeychainService::secretsOf(const QString &service)
{
    throwFailure();
    const std::lock_guard lock(m_mutex);
    std::vector<Secret> secrets;
    for (const auto &[account, value] : m_olderBuilds[service])
        secrets.push_back({account, value});
    return secrets;
}

void InMemoryKeychainService::removeSecret(const QString &service, const QString &account)
{
    throwFailure();
    const std::lock_guard lock(m_mutex);
    m_olderBuilds[service].erase(account);
}

void InMemoryKeychainService::setFailure(std::optional<KeychainError> failure)
{
    const std::lock_guard lock(m_mutex);
    m_failure = failure;
}

void InMemoryKeychainService::addSecret(const QString &service, const Secret &secret)
{
    const std::lock_guard lock(m_mutex);
    m_olderBuilds[service][secret.account] = secret.value;
}

} // namespace morvane
