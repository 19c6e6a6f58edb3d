#include "persistence/StoreSchema.h"

#include "persistence/RecordTables.h"

#include <algorithm>
#include <set>

namespace morvane {

namespace {

using StoreSchema::Column;
using StoreSchema::Presence;
using StoreSchema::Table;

using Names = std::set<QByteArray>;

constexpr const char *lastChange = columnName<Conversation>(&Conversation::Columns::updatedAt);
constexpr const char *owner = columnName<ChatMessage>(&ChatMessage::Columns::conversation);

constexpr const char *sealedMark = "char(1)||'KVT1:'";

template <typename Value>
constexpr bool isOptional = false;
template <typename Value>
constexpr bool isOptional<std::optional<Value>> = true;

template <typename Value>
constexpr bool isNumber = std::is_integral_v<Value> || std::is_same_v<Value, QDateTime>;
template <typename Value>
constexpr bool isNumber<std::optional<Value>> = isNumber<Value>;

template <typename Row, typename Value>
Column described(const RecordColumn<Row, Value> &column)
{
    return {column.name, isNumber<Value> ? "INTEGER" : "TEXT",
            isOptional<Value> ? Presence::Optional : Presence::Required, column.formerName,
            column.isSealed()};
}

template <typename R>
Table tableOf()
{
    Table table{RecordTable<R>::name, {}};
    forEachColumn<R>([&](const auto &column) { table.columns.push_back(described(column)); });
    return table;
}

// Names of the columns, empty for a table that isn't there.
Names columnsOf(Database &database, const Table &table)
{
    Names names;
    Statement statement = database.prepare("SELECT name FROM pragma_table_info(?)");
    statement.bind(QString::fromLatin1(table.name));
    while (statement.step())
        names.insert(statement.text().toUtf8());
    return names;
}

bool has(const Names &present, const Column &column)
{
    return present.contains(column.name) || (column.formerName && present.contains(column.formerName));
}

bool fits(const Names &present, const Table &table)
{
    return std::all_of(table.columns.begin(), table.columns.end(), [&](const Column &column) {
        return column.presence == Presence::Optional || has(present, column);
    });
}

QByteArray declaration(const Column &column)
{
    const QByteArray constraint = column.presence == Presence::Required ? " NOT NULL" : "";
    return QByteArray(column.name) + ' ' + column.type + constraint;
}

void create(Database &database, const Table &table)
{
    QByteArray columns = "rowid INTEGER PRIMARY KEY";
    for (const Column &column : table.columns)
        columns += ", " + declaration(column);
    database.execute(QByteArray("CREATE TABLE ") + table.name + '(' + columns + ')');
}

void update(Database &database, const Table &table, const Names &present)
{
    for (const Column &column : table.columns) {
        if (present.contains(column.name))
            continue;
        const QByteArray change =
            has(present, column) ? QByteArray("RENAME COLUMN ") + column.formerName + " TO " + column.name
                                 : "ADD COLUMN " + declaration(column);
        database.execute(QByteArray("ALTER TABLE ") + table.name + ' ' + change);
    }
}

void createIndex(Database &database, const QByteArray &kind, const QByteArray &table,
                 const QByteArray &column)
{
    database.execute("CREATE " + kind + "INDEX IF NOT EXISTS " + table + "_" + column + " ON " + table + "(" +
                     column + ")");
}

bool stands(Database &database, const QByteArray &definition)
{
    Statement present = database.prepare("SELECT 1 FROM sqlite_schema WHERE sql=?");
    present.bind(QString::fromLatin1(definition));
    return present.step();
}

// Made anew where a column of sealed text has come since: one over other columns answers nothing.
void indexPlainTexts(Database &database, const QByteArray &table)
{
    const QByteArray name = table + "_plain";
    const QByteArray definition = "CREATE INDEX " + name + " ON " + table + "(" + idColumn + ") WHERE " +
                                  StoreSchema::holdsPlainText(table);
    if (stands(database, definition))
        return;
    database.execute("DROP INDEX IF EXISTS " + name);
    database.execute(definition);
}

void index(Database &database, const Table &table)
{
    const QByteArray name = table.name;
    createIndex(database, "UNIQUE ", name, idColumn);
    indexPlainTexts(database, name);
}

void prepareTables(Database &database)
{
    for (const Table &table : StoreSchema::tables()) {
        const Names present = columnsOf(database, table);
        if (present.empty())
            create(database, table);
        else
            update(database, table, present);
        index(database, table);
    }
    createIndex(database, "", RecordTable<ChatMessage>::name, owner);
    createIndex(database, "", RecordTable<Conversation>::name, lastChange);
    database.execute("PRAGMA user_version = " + QByteArray::number(StoreSchema::version));
}

} // namespace

// Every table has a rowid besides: it grows with each row, and so keeps the order in which rows were added.
const std::array<Table, 3> &StoreSchema::tables()
{
    static const std::array<Table, 3> all{tableOf<Conversation>(), tableOf<ChatMessage>(),
                                          tableOf<ImportedDocument>()};
    return all;
}

void StoreSchema::readHead(Database &database)
{
    const QByteArray title = columnName<Conversation>(&Conversation::Columns::sealedTitle);
    (void)database.integer("SELECT sum(length(" + title + ")) FROM (SELECT " + title + " FROM " +
                           RecordTable<Conversation>::name + " ORDER BY " + lastChange + " DESC LIMIT 100)");
}

std::vector<QByteArray> StoreSchema::storedNames(Database &database, const Table &table)
{
    const Names present = columnsOf(database, table);
    std::vector<QByteArray> names;
    for (const Column &column : table.columns) {
        if (present.contains(column.name))
            names.emplace_back(column.name);
        else
            names.emplace_back(has(present, column) ? column.formerName : "");
    }
    return names;
}

QByteArray StoreSchema::holdsPlainText(QByteArrayView name)
{
    const auto table = std::ranges::find(tables(), name, &Table::name);
    QByteArrayList conditions;
    for (const Column &column : table->columns) {
        const QByteArray text = column.name;
        if (column.isSealed())
            conditions.append("(" + text + "<>'' AND substr(" + text + ",1,6)<>" + sealedMark + ")");
    }
    return "(" + conditions.join(" OR ") + ")";
}

bool StoreSchema::holdsSealedText(Database &database)
{
    for (const Table &table : tables()) {
        const std::vector<QByteArray> names = storedNames(database, table);
        QByteArrayList conditions;
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (table.columns[i].isSealed() && !names[i].isEmpty())
                conditions.append("substr(" + names[i] + ",1,6)=" + sealedMark);
        }
        if (database.integer(QByteArray("SELECT EXISTS(SELECT 1 FROM ") + table.name + " WHERE " +
                             conditions.join(" OR ") + ")") != 0)
            return true;
    }
    return false;
}

StoreSchema::Recognition StoreSchema::recognize(Database &database)
{
    if (database.integer("PRAGMA user_version") > version)
        return Recognition::Newer;
    if (database.integer("SELECT count(*) FROM sqlite_schema") == 0)
        return Recognition::Empty;
    for (const Table &table : StoreSchema::tables()) {
        const Names present = columnsOf(database, table);
        if (present.empty() || !fits(present, table))
            return Recognition::Foreign;
    }
    return Recognition::Known;
}

void StoreSchema::prepare(Database &database)
{
    if (database.integer("PRAGMA user_version") == version)
        return;
    database.execute("BEGIN IMMEDIATE");
    try {
        prepareTables(database);
        database.execute("COMMIT");
    } catch (const DatabaseError &) {
        if (database.isInTransaction())
            database.execute("ROLLBACK");
        throw;
    }
}

} // namespace morvane
