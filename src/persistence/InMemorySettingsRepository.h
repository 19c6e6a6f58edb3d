#pragma once

#include "persistence/SettingsRepository.h"

#include <map>

namespace morvane {

// Settings that are gone with the object, for tests and previews.
class InMemorySettingsRepository final : public SettingsRepository {
public:
    [[nodiscard]] std::optional<SettingsValue> value(const QString &key) const override;
    void setValue(const QString &key, const SettingsValue &value) override;
    void remove(const QString &key) override;
    void removeAll() override;
    [[nodiscard]] QStringList keys() const override;

private:
    std::map<QString, SettingsValue> m_storage;
};

} // namespace morvane
