#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QUuid>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <variant>

struct sqlite3;
struct sqlite3_stmt;

namespace morvane {

// What a column can hold here.
using SqlValue = std::variant<std::monostate, std::int64_t, QString>;

// How the values of records stand in columns: ids as upper-case text without braces, dates as milliseconds
// since 1970 in UTC, flags as 0 and 1, lists of texts as a JSON array. Absent values are NULL.
namespace SqlCoding {

[[nodiscard]] QString text(const QUuid &id);
[[nodiscard]] SqlValue value(const QUuid &id);
[[nodiscard]] SqlValue value(const QString &text);
[[nodiscard]] SqlValue value(const QDateTime &date);
[[nodiscard]] SqlValue value(const QStringList &list);
[[nodiscard]] SqlValue value(std::int64_t number);
[[nodiscard]] SqlValue value(bool flag);

template <typename T>
[[nodiscard]] SqlValue value(const std::optional<T> &optional)
{
    return optional ? value(*optional) : SqlValue();
}

} // namespace SqlCoding

// One prepared statement. Values are bound, never written into the text. Lives no longer than its database
// and stays on its thread. Throws DatabaseError.
class Statement {
public:
    Statement(sqlite3 *database, QByteArrayView sql);

    // Binds the next parameter.
    Statement &bind(const SqlValue &value);

    // Moves to the next row; false at the end.
    [[nodiscard]] bool step();

    // Runs a statement that yields no rows, and makes it ready for the next values.
    void run();

    // Columns of the row, from left to right: each read moves to the next. A value of another type than asked
    // for reads as SQLite converts it, and never fails.
    [[nodiscard]] bool isNull() const;
    [[nodiscard]] std::int64_t integer();
    [[nodiscard]] QString text();
    // For a column of few different texts: shares one of `expected`, which are ASCII, or copies the text.
    [[nodiscard]] QString text(std::span<const QString> expected);
    [[nodiscard]] QUuid id(); // null for a text that is no id
    [[nodiscard]] QDateTime date();
    [[nodiscard]] bool flag() { return integer() != 0; }
    [[nodiscard]] std::optional<QString> optionalText();
    [[nodiscard]] std::optional<QUuid> optionalId(); // also nothing for a text that is no id
    [[nodiscard]] std::optional<bool> optionalFlag();
    [[nodiscard]] std::optional<QStringList> optionalList();
    [[nodiscard]] SqlValue value(); // as it stands

private:
    // Bytes of the next column, until the next step.
    [[nodiscard]] QUtf8StringView bytes();

    struct Finalizer {
        void operator()(sqlite3_stmt *statement) const;
    };

    std::unique_ptr<sqlite3_stmt, Finalizer> m_statement;
    int m_parameter = 0;
    int m_column = 0;
};

} // namespace morvane
