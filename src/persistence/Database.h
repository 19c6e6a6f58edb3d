#pragma once

#include "persistence/DatabaseError.h"
#include "persistence/Statement.h"

#include <QString>

#include <memory>

// A connection to one SQLite database. Moves, does not copy. Stays on the thread that opened it. Throws
// DatabaseError.
class Database {
public:
    enum class Access { ReadOnly, ReadWrite, Create };

    [[nodiscard]] static Database inMemory();
    [[nodiscard]] static Database open(const QString &path, Access access);

    // Runs statements that take no values and yield no rows that matter.
    void execute(const char *sql);

    [[nodiscard]] Statement prepare(QByteArrayView sql) { return {m_connection.get(), sql}; }

    // The first column of the first row, 0 when there is none.
    [[nodiscard]] std::int64_t integer(QByteArrayView sql);

    [[nodiscard]] bool isInTransaction() const;

    // Rows changed by the last statement.
    [[nodiscard]] std::int64_t changes() const;

private:
    struct Closer {
        void operator()(sqlite3 *connection) const;
    };

    explicit Database(sqlite3 *connection)
        : m_connection(connection)
    {}
    [[nodiscard]] static Database openWith(const QByteArray &name, int flags);

    std::unique_ptr<sqlite3, Closer> m_connection;
};
