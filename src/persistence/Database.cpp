#include "persistence/Database.h"

#include <QFile>

#include <sqlite3.h>

namespace morvane {

namespace {

// How long a statement waits for another process that is writing.
constexpr int busyTimeoutMilliseconds = 5000;

constexpr int pagesInLog = 1000; // from there on a save folds it, as SQLite does by itself

} // namespace

void Database::Closer::operator()(sqlite3 *connection) const
{
    sqlite3_close_v2(connection);
}

Database Database::inMemory()
{
    Database database = openWith(":memory:", SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    database.execute("PRAGMA temp_store=MEMORY");
    return database;
}

Database Database::open(const QString &path, Access access)
{
    const QByteArray name = QFile::encodeName(path);
    switch (access) {
    case Access::Still:
        return openWith("file:" + name.toPercentEncoding("/") + "?immutable=1",
                        SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
    case Access::ReadOnly:
        return openWith(name, SQLITE_OPEN_READONLY);
    case Access::ReadWrite:
        return openWith(name, SQLITE_OPEN_READWRITE);
    case Access::Create:
        break;
    }
    return openWith(name, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
}

Database Database::openWith(const QByteArray &name, int flags)
{
    sqlite3 *connection = nullptr;
    const int code = sqlite3_open_v2(name.constData(), &connection, flags | SQLITE_OPEN_EXRESCODE, nullptr);
    Database database(connection);
    if (code != SQLITE_OK)
        throw DatabaseError(code, sqlite3_errstr(code));
    sqlite3_busy_timeout(connection, busyTimeoutMilliseconds);
    return database;
}

void Database::execute(const QByteArray &sql)
{
    if (sqlite3_exec(m_connection.get(), sql.constData(), nullptr, nullptr, nullptr) != SQLITE_OK)
        throw DatabaseError(sqlite3_extended_errcode(m_connection.get()), sqlite3_errmsg(m_connection.get()));
}

std::int64_t Database::integer(QByteArrayView sql)
{
    Statement statement = prepare(sql);
    return statement.step() ? statement.integer() : 0;
}

bool Database::isInTransaction() const
{
    return sqlite3_get_autocommit(m_connection.get()) == 0;
}

bool Database::isReadOnly() const
{
    return sqlite3_db_readonly(m_connection.get(), "main") == 1;
}

void Database::setWriting(Writing writing)
{
    const bool isToFile = writing == Writing::ToFile;
    sqlite3_wal_autocheckpoint(m_connection.get(), isToFile ? pagesInLog : 0);
    sqlite3_db_config(m_connection.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, isToFile ? 0 : 1, nullptr);
}

bool Database::isWhole()
{
    try {
        Statement statement = prepare("PRAGMA quick_check(1)");
        return statement.step() && statement.text() == QLatin1StringView("ok");
    } catch (const DatabaseError &error) {
        if (error.isDamage())
            return false;
        throw;
    }
}

void Database::interrupt()
{
    sqlite3_interrupt(m_connection.get());
}

} // namespace morvane
