#include "persistence/StoreFiles.h"

#include "persistence/StoreSchema.h"
#include "utils/files/PrivateFile.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// What SQLite keeps beside a database: its log, and the index of that, which can be made again.
const QString logSuffix = u"-wal"_s;
const QString indexSuffix = u"-shm"_s;

// SQLite gives a companion the mode of the database, so the database has the right one from its first moment.
void createPrivately(const QString &path)
{
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor >= 0)
        ::close(descriptor);
}

// Left by a process that died, or kept since the file is damaged.
bool hasLog(const QString &path)
{
    return QFileInfo(path + logSuffix).size() > 0;
}

bool isDatabase(const QString &path)
{
    constexpr QByteArrayView firstBytes("SQLite format 3\0", 16);
    QFile file(path);
    return file.open(QFile::ReadOnly) && file.read(firstBytes.size()) == firstBytes;
}

QString nameAside(const QString &path)
{
    for (int number = 1;; ++number) {
        const QString name = path + u".damaged-"_s + QString::number(number);
        if (!QFileInfo::exists(name))
            return name;
    }
}

bool linkFile(const QString &from, const QString &to)
{
    return ::link(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

void refuse(StoreSchema::Recognition recognition)
{
    switch (recognition) {
    case StoreSchema::Recognition::Empty:
    case StoreSchema::Recognition::Known:
        return;
    case StoreSchema::Recognition::Newer:
        throw DatabaseError(SQLITE_SCHEMA, "written by a later version");
    case StoreSchema::Recognition::Foreign:
        throw DatabaseError(SQLITE_NOTADB, "not a chat store");
    }
}

void configure(Database &database)
{
    database.execute("PRAGMA journal_mode=WAL");
    database.execute("PRAGMA synchronous=FULL"); // what was saved outlives a power cut
    database.execute("PRAGMA secure_delete=ON"); // what was deleted leaves no trace in free pages
    database.execute("PRAGMA temp_store=MEMORY");
    database.execute("PRAGMA trusted_schema=OFF");
    database.execute("PRAGMA cell_size_check=ON");
}

} // namespace

std::array<QString, 3> StoreFiles::withCompanions(const QString &path)
{
    return {path, path + logSuffix, path + indexSuffix};
}

bool StoreFiles::exists(const QString &path)
{
    return QFileInfo::exists(path);
}

bool StoreFiles::remove(const QString &path)
{
    bool isGone = true;
    for (const QString &file : withCompanions(path))
        isGone = (!QFileInfo::exists(file) || QFile::remove(file)) && isGone;
    return isGone;
}

void StoreFiles::makePrivate(const QString &path)
{
    for (const QString &file : withCompanions(path))
        QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner);
}

bool StoreFiles::syncToDisk(const QString &path)
{
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    const bool isSynced = descriptor >= 0 && ::fsync(descriptor) == 0;
    if (descriptor >= 0)
        ::close(descriptor);
    return isSynced;
}

std::optional<QString> StoreFiles::ownerOf(const QString &path)
{
    for (const QString &suffix : {logSuffix, indexSuffix}) {
        if (path.endsWith(suffix))
            return path.chopped(suffix.size());
    }
    return std::nullopt;
}

// Closing the last connection does it. Beside a file that is none of its own SQLite takes a log for a stray
// one and removes it.
void StoreFiles::fold(const QString &path)
{
    if (!isDatabase(path))
        throw DatabaseError(SQLITE_NOTADB, "not a database");
    {
        Database database = Database::open(path, Database::Access::ReadWrite);
        (void)database.integer("SELECT count(*) FROM sqlite_schema");
    }
    if (exists(path + logSuffix))
        throw DatabaseError(SQLITE_BUSY, "the database is in use");
}

std::optional<FileLock> StoreFiles::lock(const QString &path, std::chrono::milliseconds limit)
{
    return FileLock::acquire(path + u"-lock"_s, limit);
}

Database StoreFiles::open(const QString &path)
{
    PrivateFile::createFolder(QFileInfo(path).path());
    createPrivately(path);
    {
        Database present = openToRead(path);
        refuse(StoreSchema::recognize(present));
    }
    Database database = Database::open(path, Database::Access::ReadWrite);
    if (database.isReadOnly())
        throw DatabaseError(SQLITE_READONLY, "the store cannot be written");
    if (hasLog(path))
        database.setWriting(
            Database::Writing::ToLogAlone); // or closing it folds that into one that is refused
    configure(database);
    StoreSchema::prepare(database);
    StoreSchema::readHead(database);
    database.setWriting(Database::Writing::ToFile);
    makePrivate(path);
    return database;
}

StoreFiles::Condition StoreFiles::examine(const QString &path, const std::stop_token &stop)
{
    try {
        Database database = Database::open(path, Database::Access::ReadOnly);
        const std::stop_callback onStop(stop, [&database] { database.interrupt(); });
        const bool isWhole = database.isWhole();
        if (stop.stop_requested())
            return Condition::Unknown; // a look that was cut short finds faults where it didn't look
        return isWhole ? Condition::Whole : Condition::Damaged;
    } catch (const DatabaseError &error) {
        return error.isDamage() ? Condition::Damaged : Condition::Unknown;
    }
}

std::optional<QString> StoreFiles::setAside(const QString &path)
{
    const QString place = nameAside(path);
    const QString folder = QFileInfo(path).path();
    const auto from = withCompanions(path);
    const auto to = withCompanions(place);
    bool isDone = true;
    for (std::size_t i = 0; i < from.size(); ++i)
        isDone = isDone && (!exists(from[i]) || linkFile(from[i], to[i]));
    if (!isDone || !syncToDisk(folder) || !QFile::remove(path)) {
        remove(place);
        return std::nullopt;
    }
    remove(path); // a companion that stayed would be thrown away by the next store's first opening
    (void)syncToDisk(folder);
    return place;
}

Database StoreFiles::openToRead(const QString &path)
{
    return Database::open(path, hasLog(path) ? Database::Access::ReadOnly : Database::Access::Still);
}

} // namespace morvane
