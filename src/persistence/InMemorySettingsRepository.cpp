#include "persistence/InMemorySettingsRepository.h"

namespace morvane {

std::optional<SettingsValue> InMemorySettingsRepository::value(const QString &key) const
{
    const auto found = m_storage.find(key);
    return found == m_storage.end() ? std::nullopt : std::optional(found->second);
}

void InMemorySettingsRepository::setValue(const QString &key, const SettingsValue &value)
{
    m_storage.insert_or_assign(key, value);
}

void InMemorySettingsRepository::remove(const QString &key)
{
    m_storage.erase(key);
}

void InMemorySettingsRepository::removeAll()
{
    m_storage.clear();
}

QStringList InMemorySettingsRepository::keys() const
{
    QStringList all;
    for (const auto &[key, value] : m_storage)
        all.append(key);
    return all;
}

} // namespace morvane
