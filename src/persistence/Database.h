#pragma once

#include "persistence/DatabaseError.h"
#include "persistence/Statement.h"

#include <QString>

#include <memory>

namespace morvane {

// A connection to one SQLite database. Moves, does not copy. Stays on the thread that opened it. Throws
// DatabaseError.
class Database {
public:
    enum class Access {
        Still,    // reads a file that nobody is writing and that has no log; nothing appears beside it
        ReadOnly, // may leave empty companions beside the file
        ReadWrite,
        Create,
    };

    // Nothing of it reaches a file, temporary ones included.
    [[nodiscard]] static Database inMemory();
    [[nodiscard]] static Database open(const QString &path, Access access);

    // Runs statements that take no values and yield no rows that matter.
    void execute(const QByteArray &sql);

    [[nodiscard]] Statement prepare(QByteArrayView sql) { return {m_connection.get(), sql}; }

    // The first column of the first row, 0 when there is none.
    [[nodiscard]] std::int64_t integer(QByteArrayView sql);

    [[nodiscard]] bool isInTransaction() const;

    // A file that can't be written opens all the same.
    [[nodiscard]] bool isReadOnly() const;

    // Where what is written ends up. The log holds it as safely as the file, and a reader finds it in either.
    enum class Writing {
        ToFile,     // in the log first, which is folded into the file now and then and when it is closed
        ToLogAlone, // the file stays as it is, also when it is closed
    };
    void setWriting(Writing writing);

    // Reads through the whole file, which takes as long as reading it. False when it is damaged: pages that
    // are none, or that hang together in ways they can't. Bytes within a stored value are not looked at.
    // DatabaseError tells of other trouble.
    [[nodiscard]] bool isWhole();

    // Ends the statement that runs now, with SQLITE_INTERRUPT. From any thread, while the database lives.
    void interrupt();

    // Also done by the destructor. The last connection to a file folds its log into it.
    void close() { m_connection.reset(); }

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

} // namespace morvane
