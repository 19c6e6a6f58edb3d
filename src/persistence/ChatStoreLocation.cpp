#include "persistence/ChatStoreLocation.h"

#include "persistence/ChatStoreCopy.h"
#include "persistence/StoreFiles.h"
#include "persistence/StoreSchema.h"
#include "utils/files/PrivateFile.h"
#include "utils/log/Log.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

#include <QFileInfo>

#include <sqlite3.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace ChatStoreLocation {

namespace {

constexpr auto category = Log::Category::Persistence;
constexpr auto lockName = ".chat-store-move.lock"_L1;

bool wasMoved(const Move &move)
{
    return move.defaults.boolean(movedFlagKey).value_or(false);
}

Failed cannotOpen(const QString &path)
{
    return {u"the store at %1 could not be opened"_s.arg(QFileInfo(path).fileName())};
}

// An old store that is another program's, or of a version that this one doesn't know.
bool isForeign(Database &source)
{
    return StoreSchema::recognize(source) != StoreSchema::Recognition::Known;
}

Outcome removeEmpty(const QString &source)
{
    StoreFiles::remove(source);
    return NothingToMove();
}

Outcome notOurs()
{
    Log::info(category, "The shared default store is not readable as Morvane's; leaving it in place"_L1);
    return NothingToMove();
}

Outcome moveInto(const Move &move, MoveKind kind, Database source, const Fingerprint &expected)
{
    switch (kind) {
    case MoveKind::FreshFile:
        source.close(); // its files are copied as they are
        return ChatStoreCopy::intoFreshFile(move, expected);
    case MoveKind::LiveStore:
        return ChatStoreCopy::intoLiveStore(move, source, expected);
    }
    return NothingToMove();
}

Outcome moveRecords(const Move &move, Database source, const Fingerprint &expected)
{
    std::optional<FileLock> right;
    if (move.targetIs == Target::Free) {
        right = StoreFiles::lock(move.target, std::chrono::milliseconds(0));
        if (!right)
            return cannotOpen(move.target);
    }
    const auto kind = StoreFiles::exists(move.target) ? MoveKind::LiveStore : MoveKind::FreshFile;
    const Outcome outcome = moveInto(move, kind, std::move(source), expected);
    if (std::holds_alternative<Moved>(outcome))
        StoreFiles::remove(move.source);
    return outcome;
}

Outcome run(const Move &move)
{
    if (!StoreFiles::exists(move.source))
        return NothingToMove();
    if (move.isVaultLocked())
        return WaitingForUnlock();
    try {
        Database source = StoreFiles::openToRead(move.source);
        if (isForeign(source))
            return notOurs();
        const Fingerprint expected = fingerprint(source, *move.sealing);
        if (expected.unreadable > 0)
            return Failed{u"%1 sealed fields in the older store will not open with this %2's key"_s
                              .arg(expected.unreadable)
                              .arg(DesktopWords::here().device)};
        if (expected.isEmpty())
            return removeEmpty(move.source);
        return moveRecords(move, std::move(source), expected);
    } catch (const DatabaseError &error) {
        return error.code() == SQLITE_NOTADB ? notOurs() : Outcome(cannotOpen(move.source));
    } catch (const FileError &) {
        return cannotOpen(move.target);
    }
}

struct Applier {
    SettingsRepository &defaults;

    void operator()(const Moved &moved) const
    {
        finish();
        Log::info(
            category,
            "Moved %ld conversations, %ld messages and %ld document records into the app's own encrypted "
            "store"_L1,
            {moved.conversations, moved.messages, moved.documents});
    }
    void operator()(const KeptBoth &kept) const
    {
        defaults.setString(leftOldFileKey, kept.oldStore);
        Log::info(category, "Both chat stores hold conversations; left %ld in the older file untouched"_L1,
                  {kept.conversations});
    }
    void operator()(const Failed &failed) const
    {
        Log::error(category, "Could not move the conversation store: %{public}s"_L1, {failed.reason});
    }
    void operator()(NothingToMove) const { finish(); }
    void operator()(AnotherLaunchIsMoving) const
    {
        Log::info(category, "Another launch is moving the conversation store; leaving it to that one"_L1);
    }
    void operator()(WaitingForUnlock) const
    {
        Log::info(category, "The conversation store move is waiting for the app to be unlocked"_L1);
    }

    void finish() const
    {
        defaults.setBoolean(movedFlagKey, true);
        defaults.remove(leftOldFileKey);
    }
};

std::optional<ChatStoreMigrationLock> lockFor(const Move &move)
{
    const QString folder = QFileInfo(move.target).path();
    try {
        PrivateFile::createFolder(folder);
        return FileLock::acquire(folder + u'/' + lockName, move.lockLimit, move.pause);
    } catch (const FileError &) {
        return std::nullopt;
    }
}

Outcome applied(const Move &move, Outcome outcome)
{
    std::visit(Applier{move.defaults}, outcome);
    move.defaults.flush();
    return outcome;
}

} // namespace

QString storePath(const SupportFolders &folders)
{
    return folders.data + u'/' + Product::storeFolder + u"/Morvane.store"_s;
}

QString oldStorePath(const SupportFolders &folders)
{
    return folders.data + u"/default.store"_s;
}

QStringList ownOldStore(const SupportFolders &folders)
{
    const QString store = oldStorePath(folders);
    if (!StoreFiles::exists(store))
        return {};
    try {
        Database database = StoreFiles::openToRead(store);
        if (isForeign(database))
            return {};
    } catch (const DatabaseError &) {
        return {};
    }
    QStringList files;
    for (const QString &file : StoreFiles::withCompanions(store)) {
        if (QFileInfo::exists(file))
            files += file;
    }
    return files;
}

Outcome moveIfNeeded(const Move &move)
{
    if (wasMoved(move))
        return NothingToMove();
    const auto lock = lockFor(move);
    if (!lock)
        return applied(move, AnotherLaunchIsMoving());
    if (wasMoved(move)) // by a launch that this one waited for
        return NothingToMove();
    return applied(move, run(move));
}

} // namespace ChatStoreLocation

} // namespace morvane
