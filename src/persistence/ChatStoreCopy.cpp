#include "persistence/ChatStoreCopy.h"

#include "persistence/RecordTables.h"
#include "persistence/StoreFiles.h"
#include "persistence/StoreSchema.h"
#include "utils/files/PrivateFile.h"

#include <QFile>
#include <QFileInfo>

#include <cstdio>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace ChatStoreLocation;

namespace {

QString nameOf(const QString &path)
{
    return QFileInfo(path).fileName();
}

Failed cannotOpen(const QString &path)
{
    return {u"the store at %1 could not be opened"_s.arg(nameOf(path))};
}

Failed cannotUndo(const QString &path)
{
    return {u"a part-finished move into %1 could not be undone"_s.arg(nameOf(path))};
}

Moved countsOf(const Fingerprint &source)
{
    return {std::ssize(source.conversations), std::ssize(source.messages), std::ssize(source.documents)};
}

bool copyFiles(const Move &move, const QString &part)
{
    const auto from = StoreFiles::withCompanions(move.source);
    const auto to = StoreFiles::withCompanions(part);
    for (std::size_t i = 0; i < from.size(); ++i) {
        if (StoreFiles::exists(from[i]) && !move.copyFile(from[i], to[i]))
            return false;
    }
    return true;
}

// What is wrong with the part-finished file. Closing it folds its companions into it.
std::optional<QString> wrongWith(const QString &part, const Move &move, const Fingerprint &expected)
{
    try {
        Database copy = StoreFiles::open(part);
        return shortcoming(expected, fingerprint(copy, *move.sealing));
    } catch (const std::exception &) {
        return cannotOpen(part).reason;
    }
}

// A companion without its store would be taken for one of the new file's.
bool putInPlace(const QString &part, const QString &target)
{
    const auto [file, log, index] = StoreFiles::withCompanions(part);
    if (StoreFiles::exists(log) || !StoreFiles::remove(target) || !StoreFiles::syncToDisk(part))
        return false;
    if (::rename(QFile::encodeName(part).constData(), QFile::encodeName(target).constData()) != 0)
        return false;
    return StoreFiles::syncToDisk(QFileInfo(target).path());
}

// The columns of a table as they are called in a store, in the order of the schema; NULL for one that it
// lacks.
QByteArray selected(Database &database, const StoreSchema::Table &table)
{
    QByteArrayList names;
    for (const QByteArray &stored : StoreSchema::storedNames(database, table))
        names.append(stored.isEmpty() ? QByteArray("NULL") : stored);
    return names.join(',');
}

void copyRows(Database &source, Database &target, const StoreSchema::Table &table)
{
    QByteArrayList names;
    QByteArrayList marks;
    for (const auto &column : table.columns) {
        names.append(column.name);
        marks.append("?");
    }
    Statement rows =
        source.prepare("SELECT " + selected(source, table) + " FROM " + table.name + " ORDER BY rowid");
    Statement insert = target.prepare(QByteArray("INSERT OR REPLACE INTO ") + table.name + "(" +
                                      names.join(',') + ") VALUES(" + marks.join(',') + ")");
    while (rows.step()) {
        for (std::size_t i = 0; i < table.columns.size(); ++i)
            insert.bind(rows.value());
        insert.run();
    }
}

std::optional<QString> copyAllRows(Database &source, Database &target, const Move &move,
                                   const Fingerprint &expected)
{
    for (const auto &table : StoreSchema::tables())
        copyRows(source, target, table);
    return shortcoming(expected, fingerprint(target, *move.sealing, &expected));
}

// The chat that every start makes for the person to write in has no messages and doesn't count.
bool holdsMessages(Database &store)
{
    const QByteArray owner = columnName<ChatMessage>(&ChatMessage::Columns::conversation);
    return store.integer("SELECT EXISTS(SELECT 1 FROM " + QByteArray(RecordTable<ChatMessage>::name) +
                         " WHERE " + owner + " IN (SELECT " + idColumn + " FROM " +
                         RecordTable<Conversation>::name + "))") != 0;
}

// As after a move that was cut off before the old file went.
bool holdsAllOf(Database &source, Database &target, const Move &move, const Fingerprint &expected)
{
    const Fingerprint said = fingerprintOfWhatWasSaid(source, *move.sealing, expected);
    return !shortcoming(said, fingerprint(target, *move.sealing, &said));
}

} // namespace

bool Move::copyPrivately(const QString &from, const QString &to)
{
    if (!QFile::copy(from, to))
        return false;
    QFile::setPermissions(to, QFile::ReadOwner | QFile::WriteOwner);
    return true;
}

Outcome ChatStoreCopy::intoFreshFile(const Move &move, const Fingerprint &expected)
{
    const QString part = move.target + u".moving"_s;
    if (!StoreFiles::remove(part)) // of a launch that died while moving
        return cannotUndo(part);
    std::optional<QString> reason;
    if (!copyFiles(move, part))
        reason = u"the copy could not be written"_s;
    else
        reason = wrongWith(part, move, expected);
    if (!reason && !putInPlace(part, move.target))
        reason = u"the copy could not be put in its place"_s;
    if (!reason)
        return countsOf(expected);
    return StoreFiles::remove(part) ? Failed{*reason} : cannotUndo(part);
}

Outcome ChatStoreCopy::intoLiveStore(const Move &move, Database &source, const Fingerprint &expected)
{
    std::optional<Database> target;
    try {
        target = StoreFiles::open(move.target);
        if (holdsMessages(*target) && holdsAllOf(source, *target, move, expected))
            return countsOf(expected);
        if (holdsMessages(*target))
            return KeptBoth{move.source, std::ssize(expected.conversations)};
        if (!target->isWhole())
            return cannotOpen(move.target);
        target->execute("BEGIN IMMEDIATE");
    } catch (const std::exception &) {
        return cannotOpen(move.target);
    }
    std::optional<QString> reason;
    try {
        reason = copyAllRows(source, *target, move, expected);
        if (!reason)
            target->execute("COMMIT");
    } catch (const DatabaseError &) {
        reason = u"the copy could not be written"_s;
    }
    if (!reason)
        return countsOf(expected);
    try {
        if (target->isInTransaction())
            target->execute("ROLLBACK");
    } catch (const DatabaseError &) {
        return cannotUndo(move.target);
    }
    return Failed{*reason};
}

} // namespace morvane
