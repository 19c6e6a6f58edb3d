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

// SQLite gives a companion the mode of the database, so the database has the right one from its first moment.
void createPrivately(const QString &path)
{
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor >= 0)
        ::close(descriptor);
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
    return {path, path + u"-wal"_s, path + u"-shm"_s};
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
    configure(database);
    StoreSchema::prepare(database);
    StoreSchema::readHead(database);
    makePrivate(path);
    return database;
}

Database StoreFiles::openToRead(const QString &path)
{
    const bool hasLog = QFileInfo(path + u"-wal"_s).size() > 0; // left by a process that died
    return Database::open(path, hasLog ? Database::Access::ReadOnly : Database::Access::Still);
}

} // namespace morvane
