#include "persistence/UserDefaultsSettingsRepository.h"

#include "persistence/SettingsValueCoding.h"
#include "utils/files/PrivateFile.h"
#include "utils/log/Log.h"

#include <QFile>
#include <QFileInfo>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr auto category = Log::Category::Persistence;

// A name beside the file that nothing has yet.
QString nameAside(const QString &path)
{
    for (int number = 1;; ++number) {
        const QString name = path + u".unreadable-"_s + QString::number(number);
        if (!QFileInfo::exists(name))
            return name;
    }
}

bool isBroken(const QString &path)
{
    return QSettings(path, QSettings::IniFormat).status() == QSettings::FormatError;
}

void setAsideIfBroken(const QString &path)
{
    if (!QFileInfo::exists(path) || !isBroken(path))
        return;
    const QString name = nameAside(path);
    if (QFile::rename(path, name))
        Log::error(category, "The settings file could not be read; kept it as %{public}s"_L1,
                   {QFileInfo(name).fileName()});
    else
        Log::error(category, "The settings file could not be read and could not be set aside"_L1);
}

// Qt keeps the mode of a file that it replaces, so the file exists with the right one before Qt writes.
void makePrivate(const QString &path)
{
    try {
        if (!QFileInfo::exists(path))
            PrivateFile::write(path, {});
    } catch (const FileError &error) {
        Log::error(category, "The settings file could not be made: %s"_L1, {error.what()});
    }
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
}

QString prepared(const QString &path)
{
    setAsideIfBroken(path);
    makePrivate(path);
    return path;
}

} // namespace

UserDefaultsSettingsRepository::UserDefaultsSettingsRepository(const QString &path)
    : m_defaults(prepared(path), QSettings::IniFormat)
{}

UserDefaultsSettingsRepository::UserDefaultsSettingsRepository(const QString &path, Preparation)
    : m_defaults(path, QSettings::IniFormat)
{}

std::unique_ptr<UserDefaultsSettingsRepository> UserDefaultsSettingsRepository::existing(const QString &path)
{
    if (!QFileInfo::exists(path) || isBroken(path))
        return nullptr;
    return std::unique_ptr<UserDefaultsSettingsRepository>(
        new UserDefaultsSettingsRepository(path, Preparation::None));
}

QString UserDefaultsSettingsRepository::path(const SupportFolders &folders, const QString &domain)
{
    return folders.config + u'/' + domain + u".ini"_s;
}

std::optional<SettingsValue> UserDefaultsSettingsRepository::value(const QString &key) const
{
    const QVariant stored = m_defaults.value(key);
    if (stored.typeId() != QMetaType::QString)
        return std::nullopt;
    return SettingsValueCoding::decode(stored.toString());
}

void UserDefaultsSettingsRepository::setValue(const QString &key, const SettingsValue &value)
{
    m_defaults.setValue(key, SettingsValueCoding::encode(value));
}

void UserDefaultsSettingsRepository::remove(const QString &key)
{
    m_defaults.remove(key);
}

void UserDefaultsSettingsRepository::removeAll()
{
    m_defaults.clear();
    m_defaults.sync();
}

QStringList UserDefaultsSettingsRepository::keys() const
{
    return m_defaults.allKeys();
}

void UserDefaultsSettingsRepository::flush()
{
    m_defaults.sync();
}

} // namespace morvane
