#include "persistence/LegacyBundleMigration.h"

#include "persistence/StoreFiles.h"
#include "security/KeychainError.h"
#include "security/KeychainServicing.h"
#include "security/LegacySecretListing.h"
#include "utils/files/PrivateFile.h"
#include "utils/log/Log.h"
#include "utils/text/Product.h"

#include <QDir>
#include <QSet>

#include <algorithm>
#include <array>
#include <filesystem>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using LegacyBundleMigration::Surroundings;

constexpr auto category = Log::Category::Persistence;
constexpr std::array identifiers{"ai.quelmarfolk.macos"_L1, "ai.quelmarfolk.mac"_L1,
                                 "com.morvane.Quelmar"_L1};

constexpr auto everything = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;

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

bool isTaken(const QString &path)
{
    return std::filesystem::exists(std::filesystem::symlink_status(nativePath(path)));
}

// A database and its companions are one: beside another database a log is applied to that, or thrown away.
bool canMove(const QString &from, const QString &to, const QStringList &names, const QString &name)
{
    if (StoreFiles::ownerOf(name) || isTaken(to + u'/' + name))
        return false; // a companion goes into its database, or stays with it
    const auto isOfThis = [&](const QString &other) { return StoreFiles::ownerOf(other) == name; };
    if (std::ranges::any_of(QDir(to).entryList(everything), isOfThis))
        return false;
    if (std::ranges::any_of(names, isOfThis))
        StoreFiles::fold(from + u'/' + name);
    return true;
}

// How many items moved. One that can't move doesn't hold up the others.
int moveContents(const QString &from, const QString &to)
{
    int moved = 0;
    const QStringList names = QDir(from).entryList(everything);
    for (const QString &name : names) {
        try {
            if (!canMove(from, to, names, name))
                continue;
            PrivateFile::createFolder(to);
            std::filesystem::rename(nativePath(from + u'/' + name), nativePath(to + u'/' + name));
            ++moved;
        } catch (const std::exception &error) {
            Log::error(category, "Migration: app-support move failed — %s"_L1, {error.what()});
        }
    }
    return moved;
}

void moveSupportFiles(const Surroundings &surroundings, const QString &identifier)
{
    const QString folder = surroundings.folders.data + u'/' + identifier;
    const QFileInfo info(folder);
    if (!info.isDir() || info.isSymLink())
        return;
    const int moved = moveContents(folder, surroundings.folders.data + u'/' + Product::storeFolder);
    QDir().rmdir(folder); // only when nothing is left in it
    if (moved > 0)
        Log::info(category, "Migration: moved app-support contents to the new folder"_L1);
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
