#include "app/Erasure.h"

#include "persistence/UserDefaultsSettingsRepository.h"
#include "security/KeychainServicing.h"
#include "security/LocalDataVault.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

#include <QDir>
#include <QFileInfo>

namespace morvane {

using namespace Qt::StringLiterals;

namespace Erasure {

namespace {

QString settingsPath(const SupportFolders &folders)
{
    return UserDefaultsSettingsRepository::path(folders, Product::serviceName);
}

} // namespace

bool isUnderway(const SupportFolders &folders)
{
    const auto defaults = UserDefaultsSettingsRepository::existing(settingsPath(folders));
    return defaults && defaults->boolean(underwayKey).value_or(false);
}

void begin(SettingsRepository &defaults)
{
    defaults.setBoolean(underwayKey, true);
    defaults.flush();
}

LocalDataEraser::Removed removeFiles(const SupportFolders &folders)
{
    return LocalDataEraser::removeAll(folders);
}

int removeSecrets(KeychainServicing &keychain)
{
    LocalDataVault(keychain).destroyKey();
    return keychain.deleteAll();
}

void emptySettings(const SupportFolders &folders)
{
    UserDefaultsSettingsRepository defaults(settingsPath(folders));
    defaults.removeAll();
    defaults.flush();
}

QStringList report(const Result &result, const QString &shortcutsFolder)
{
    const QString others = result.secrets > 0 ? u", and %1 stored secrets"_s.arg(result.secrets) : QString();
    QStringList lines{u"Deleted: your chats, drafts, notes, instructions and settings (%1 files and "
                      u"folders)%2. The key that "
                      u"your data was encrypted with is gone."_s.arg(result.files.count)
                          .arg(others)};
    for (const QString &path : result.files.leftover)
        lines +=
            u"This %1 refused to remove “%2”. What is encrypted in it can't be read without the key."_s.arg(
                DesktopWords::here().device, QDir::toNativeSeparators(path));
    lines += u"What this did not reach:"_s;
    lines += LocalDataEraser::limits();
    if (QFileInfo::exists(shortcutsFolder))
        lines += u"Your shortcuts. The programs that you put into “%1” stay there."_s.arg(
            QDir::toNativeSeparators(shortcutsFolder));
    return lines;
}

} // namespace Erasure

} // namespace morvane
