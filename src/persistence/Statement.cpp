#include "persistence/Statement.h"

#include "persistence/DatabaseError.h"
#include "utils/text/Identifier.h"
#include "utils/text/UniversalTime.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <sqlite3.h>

#include <algorithm>

namespace morvane {

namespace {

[[noreturn]] void fail(sqlite3 *database)
{
    throw DatabaseError(sqlite3_extended_errcode(database), sqlite3_errmsg(database));
}

} // namespace

QString SqlCoding::text(const QUuid &id)
{
    return Identifier::text(id);
}

SqlValue SqlCoding::value(const QUuid &id)
{
    return text(id);
}

SqlValue SqlCoding::value(const QString &text)
{
    return text;
}

SqlValue SqlCoding::value(const QDateTime &date)
{
    return std::int64_t{date.toMSecsSinceEpoch()};
}

SqlValue SqlCoding::value(const QStringList &list)
{
    return QString::fromUtf8(QJsonDocument(QJsonArray::fromStringList(list)).toJson(QJsonDocument::Compact));
}

SqlValue SqlCoding::value(std::int64_t number)
{
    return number;
}

SqlValue SqlCoding::value(bool flag)
{
    return std::int64_t{flag};
}

void Statement::Finalizer::operator()(sqlite3_stmt *statement) const
{
    sqlite3_finalize(statement);
}

Statement::Statement(sqlite3 *database, QByteArrayView sql)
{
    sqlite3_stmt *statement = nullptr;
    const int code =
        sqlite3_prepare_v2(database, sql.data(), static_cast<int>(sql.size()), &statement, nullptr);
    m_statement.reset(statement);
    if (code != SQLITE_OK)
        fail(database);
}

Statement &Statement::bind(const SqlValue &value)
{
    const int index = ++m_parameter;
    int code = SQLITE_OK;
    if (const auto *number = std::get_if<std::int64_t>(&value)) {
        code = sqlite3_bind_int64(m_statement.get(), index, *number);
    } else if (const auto *text = std::get_if<QString>(&value)) {
        const QByteArray utf8 = text->toUtf8();
        code = sqlite3_bind_text64(m_statement.get(), index, utf8.constData(),
                                   static_cast<sqlite3_uint64>(utf8.size()), SQLITE_TRANSIENT, SQLITE_UTF8);
    } else {
        code = sqlite3_bind_null(m_statement.get(), index);
    }
    if (code != SQLITE_OK)
        fail(sqlite3_db_handle(m_statement.get()));
    return *this;
}

bool Statement::step()
{
    m_column = 0;
    switch (sqlite3_step(m_statement.get())) {
    case SQLITE_ROW:
        return true;
    case SQLITE_DONE:
        return false;
    default:
        fail(sqlite3_db_handle(m_statement.get()));
    }
}

void Statement::run()
{
    while (step()) {
    }
    sqlite3_reset(m_statement.get());
    m_parameter = 0;
}

bool Statement::isNull() const
{
    return sqlite3_column_type(m_statement.get(), m_column) == SQLITE_NULL;
}

std::int64_t Statement::integer()
{
    return sqlite3_column_int64(m_statement.get(), m_column++);
}

QUtf8StringView Statement::bytes()
{
    const auto *start = reinterpret_cast<const char *>(sqlite3_column_text(m_statement.get(), m_column));
    return {start, sqlite3_column_bytes(m_statement.get(), m_column++)};
}

QString Statement::text()
{
    return bytes().toString();
}

QString Statement::text(std::span<const QString> expected)
{
    const QUtf8StringView read = bytes();
    const QLatin1StringView plain(read.data(), read.size());
    const auto known = std::ranges::find(expected, plain);
    return known == expected.end() ? read.toString() : *known;
}

QUuid Statement::id()
{
    return QUuid::fromString(bytes());
}

QDateTime Statement::date()
{
    return UniversalTime::ofMilliseconds(integer());
}

std::optional<QString> Statement::optionalText()
{
    if (isNull()) {
        ++m_column;
        return std::nullopt;
    }
    return text();
}

std::optional<QUuid> Statement::optionalId()
{
    const QUuid read = id();
    return read.isNull() ? std::nullopt : std::optional(read);
}

std::optional<bool> Statement::optionalFlag()
{
    if (isNull()) {
        ++m_column;
        return std::nullopt;
    }
    return flag();
}

std::optional<QStringList> Statement::optionalList()
{
    const auto json = optionalText();
    if (!json)
        return std::nullopt;
    QStringList list;
    for (const auto &element : QJsonDocument::fromJson(json->toUtf8()).array())
        list.append(element.toString());
    return list;
}

SqlValue Statement::value()
{
    switch (sqlite3_column_type(m_statement.get(), m_column)) {
    case SQLITE_NULL:
        ++m_column;
        return {};
    case SQLITE_INTEGER:
        return integer();
    default:
        return text();
    }
}

} // namespace morvane
