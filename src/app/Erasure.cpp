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

Secrets removeSecrets(KeychainServicing &keychain)
{
    LocalDataVault vault(keychain);
    vault.destroyKey();
    const int count = keychain.deleteAll();
    return {count, !vault.mayHoldKey()};
}

void emptySettings(const SupportFolders &folders)
{
    UserDefaultsSettingsRepository defaults(settingsPath(folders));
    defaults.removeAll();
    defaults.flush();
}

QStringList report(const Result &result, const QString &shortcutsFolder)
{
    const QString others =
        result.secrets.count > 0 ? u", and %1 stored secrets"_s.arg(result.secrets.count) : QString();
    const QString key = result.secrets.isKeyGone
                            ? u"The key that your data was encrypted with is gone."_s
                            : u"Your %1 did not let go of the key that your data was encrypted with."_s.arg(
                                  DesktopWords::here().secretStore);
    QStringList lines{
        u"Deleted: your chats, drafts, notes, instructions and settings (%1 files and folders)%2. "_s
            .arg(result.files.count)
            .arg(others) +
        key};
    for (const QString &path : result.files.leftover)
        lines += u"This %1 refused to remove “%2”."_s.arg(DesktopWords::here().device,
                                                          QDir::toNativeSeparators(path));
    lines += u"What this did not reach:"_s;
    lines += LocalDataEraser::limits();
    if (QFileInfo::exists(shortcutsFolder))
        lines += u"Your shortcuts. The programs that you put into “%1” stay there."_s.arg(
            QDir::toNativeSeparators(shortcutsFolder));
    return lines;
}

} // namespace Erasure

} // namespace morvane
