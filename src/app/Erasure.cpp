#include "app/Erasure.h"

#include "persistence/UserDefaultsSettingsRepository.h"
#include "security/KeyFile.h"
#include "security/KeychainServicing.h"
#include "security/LocalDataVault.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

#include <QDir>
#include <QFile>
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

// A full disk takes no shorter file in the place of the one with the keys, but lets go of that.
Secrets removeSecrets(KeychainServicing &keychain, const QString &keyFile)
{
    LocalDataVault vault(keychain);
    vault.destroyKey();
    Secrets secrets{keychain.deleteAll(), !vault.mayHoldKey(), {}};
    if (secrets.isKeyGone || !QFileInfo::exists(keyFile))
        return secrets;
    try {
        KeyFile(keyFile).wipeOut();
        keychain.clearCache();
        secrets.isKeyGone = !vault.mayHoldKey();
    } catch (const SecretStoreError &) {
        secrets.keyFile = keyFile;
    }
    return secrets;
}

// What a settings object says afterwards may be what it would have written; the file says what is there.
QString emptySettings(const SupportFolders &folders)
{
    const QString path = settingsPath(folders);
    {
        UserDefaultsSettingsRepository defaults(path);
        defaults.removeAll();
        defaults.flush();
    }
    if (QFileInfo(path).size() > 0)
        QFile::remove(path);
    return QFileInfo(path).size() > 0 ? path : QString();
}

namespace {

QString whereTheKeyIs(const Secrets &secrets)
{
    if (secrets.isKeyGone)
        return u"The key that your data was encrypted with is gone."_s;
    if (!secrets.keyFile.isEmpty())
        return u"The file “%1” still holds the key that your data was encrypted with."_s.arg(
            QDir::toNativeSeparators(secrets.keyFile));
    return u"Your %1 did not let go of the key that your data was encrypted with."_s.arg(
        DesktopWords::here().secretStore);
}

} // namespace

QStringList report(const Result &result, const QString &shortcutsFolder)
{
    const QString others =
        result.secrets.count > 0 ? u", and %1 stored secrets"_s.arg(result.secrets.count) : QString();
    const QStringList left =
        result.files.leftover +
        (result.settingsLeft.isEmpty() ? QStringList() : QStringList(result.settingsLeft));
    const QString all = u"your chats, drafts, notes, instructions and settings"_s;
    QStringList lines{u"Deleted: %1 (%2 files and folders)%3. "_s
                          .arg(left.isEmpty() ? all : u"what could be deleted of "_s + all)
                          .arg(result.files.count)
                          .arg(others) +
                      whereTheKeyIs(result.secrets)};
    if (!result.settingsLeft.isEmpty())
        lines += u"The next start tries again to delete what is left."_s;
    for (const QString &path : left)
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
