#pragma once

#include "persistence/SettingsRepository.h"
#include "utils/files/SupportFolders.h"

#include <QSettings>

#include <memory>

namespace morvane {

// A defaults domain in one INI file that only its owner may read. Each value carries its type in front
// ("int:5", "text:5"), so what was written as a text never reads as a number.
//
// A file that isn't an INI file is set aside under another name and the domain starts empty, so nothing of it
// is lost.
class UserDefaultsSettingsRepository final : public SettingsRepository {
public:
    explicit UserDefaultsSettingsRepository(const QString &path);

    // A domain to read from: its file is left as it is. Null when there is none, or one that can't be read.
    [[nodiscard]] static std::unique_ptr<UserDefaultsSettingsRepository> existing(const QString &path);

    // Where the domain of that name is kept.
    [[nodiscard]] static QString path(const SupportFolders &folders, const QString &domain);

    [[nodiscard]] std::optional<SettingsValue> value(const QString &key) const override;
    void setValue(const QString &key, const SettingsValue &value) override;
    void remove(const QString &key) override;
    void removeAll() override;
    [[nodiscard]] QStringList keys() const override;
    void flush() override;

private:
    enum class Preparation { None };
    UserDefaultsSettingsRepository(const QString &path, Preparation);

    QSettings m_defaults;
};

} // namespace morvane
