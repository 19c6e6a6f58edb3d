#include "persistence/LegacyBundleMigration.h"

#include "security/KeychainError.h"
#include "security/KeychainServicing.h"
#include "security/LegacySecretListing.h"
#include "utils/files/PrivateFile.h"
#include "utils/log/Log.h"
#include "utils/text/Product.h"

#include <QDir>
#include <QSet>

#include <array>
#include <filesystem>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using LegacyBundleMigration::Surroundings;

constexpr auto category = Log::Category::Persistence;
constexpr std::array identifiers{"ai.quelmarfolk.macos"_L1, "ai.quelmarfolk.mac"_L1,
                                 "com.morvane.Quelmar"_L1};

// A value that is already set here wins.
void carryOverSettings(const Surroundings &surroundings, const QString &identifier)
{
    const auto legacy = surroundings.openDomain(identifier);
    if (!legacy)
        return;
    const QStringList held = surroundings.defaults.keys();
    const QSet<QString> present(held.begin(), held.end());
    int carried = 0;
    for (const QString &key : legacy->keys()) {
        const auto value = legacy->value(key);
        if (!value || present.contains(key))
            continue;
        surroundings.defaults.setValue(key, *value);
        ++carried;
    }
    if (carried > 0)
        Log::info(category, "Migration: carried over %ld setting(s) from %{public}s"_L1,
                  {carried, identifier});
}

std::filesystem::path nativePath(const QString &path)
{
    return QFile::encodeName(path).toStdString();
}

// How many items moved. Throws std::filesystem::filesystem_error or FileError.
int moveContents(const QString &from, const QString &to)
{
    int moved = 0;
    const auto everything = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    for (const QString &name : QDir(from).entryList(everything)) {
        const auto target = nativePath(to + u'/' + name);
        if (std::filesystem::exists(std::filesystem::symlink_status(target)))
            continue;
        PrivateFile::createFolder(to);
        std::filesystem::rename(nativePath(from + u'/' + name), target);
        ++moved;
    }
    return moved;
}

void moveSupportFiles(const Surroundings &surroundings, const QString &identifier)
{
    const QString folder = surroundings.folders.data + u'/' + identifier;
    const QFileInfo info(folder);
    if (!info.isDir() || info.isSymLink())
        return;
    try {
        const int moved = moveContents(folder, surroundings.folders.data + u'/' + Product::storeFolder);
        QDir().rmdir(folder); // only when nothing is left in it
        if (moved > 0)
            Log::info(category, "Migration: moved app-support contents to the new folder"_L1);
    } catch (const std::exception &error) {
        Log::error(category, "Migration: app-support move failed — %s"_L1, {error.what()});
    }
}

// Another secret under the same account stays, and so does the old one: either may be the key to stored data.
bool moveSecret(const Surroundings &surroundings, const QString &identifier,
                const LegacySecretListing::Secret &secret)
{
    const auto present = surroundings.keychain.read(secret.account);
    if (present && *present != secret.value)
        return false;
    if (!present)
        surroundings.keychain.save(secret.value, secret.account);
    surroundings.legacySecrets.removeSecret(identifier, secret.account);
    return true;
}

void moveSecrets(const Surroundings &surroundings, const QString &identifier)
{
    constexpr auto failed = "Migration: Keychain move failed; the old entry was left in place"_L1;
    try {
        for (const auto &secret : surroundings.legacySecrets.secretsOf(identifier)) {
            if (secret.value.isEmpty())
                continue;
            if (moveSecret(surroundings, identifier, secret))
                Log::info(category, "Migration: moved a stored secret to the new Keychain service"_L1);
            else
                Log::error(category, failed);
        }
    } catch (const KeychainError &) {
        Log::error(category, failed);
    }
}

} // namespace

void LegacyBundleMigration::runOnce(const Surroundings &surroundings)
{
    if (surroundings.defaults.boolean(QString(flagKey)).value_or(false))
        return;
    for (const QLatin1StringView identifier : identifiers)
        carryOverSettings(surroundings, identifier);
    for (const QLatin1StringView identifier : identifiers)
        moveSupportFiles(surroundings, identifier);
    for (const QLatin1StringView identifier : identifiers)
        moveSecrets(surroundings, identifier);
    surroundings.defaults.setBoolean(QString(flagKey), true);
    surroundings.defaults.flush();
    Log::info(category, "Completed migration from the legacy bundle identifier"_L1);
}

} // namespace morvane
