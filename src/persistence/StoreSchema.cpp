#include "persistence/StoreSchema.h"

#include <algorithm>
#include <set>

namespace morvane {

namespace {

using StoreSchema::Column;
using StoreSchema::Presence;
using StoreSchema::Table;

using Names = std::set<QByteArray>;

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

void index(Database &database, const Table &table)
{
    const QByteArray name = table.name;
    database.execute("CREATE UNIQUE INDEX IF NOT EXISTS " + name + "_id ON " + name + "(id)");
    database.execute("CREATE INDEX IF NOT EXISTS " + name + "_plain ON " + name + "(id) WHERE " +
                     StoreSchema::holdsPlainText(name));
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
    database.execute("CREATE INDEX IF NOT EXISTS ChatMessage_conversation ON ChatMessage(conversation)");
    database.execute("CREATE INDEX IF NOT EXISTS Conversation_updatedAt ON Conversation(updatedAt)");
    database.execute("PRAGMA user_version = " + QByteArray::number(StoreSchema::version));
}

} // namespace

// Every table has a rowid besides: it grows with each row, and so keeps the order in which rows were added.
const std::array<Table, 3> &StoreSchema::tables()
{
    using enum Presence;
    static const std::array<Table, 3> all{{
        {"Conversation",
         {{"id", "TEXT", Required},
          {"sealedTitle", "TEXT", Required, "title"},
          {"createdAt", "INTEGER", Required},
          {"updatedAt", "INTEGER", Required},
          {"sealedRollingSummary", "TEXT", Optional, "rollingSummary"},
          {"personaPreset", "TEXT", Optional},
          {"spaceRaw", "TEXT", Optional}}},
        {"ChatMessage",
         {{"id", "TEXT", Required},
          {"roleRaw", "TEXT", Required},
          {"sealedContent", "TEXT", Required, "content"},
          {"createdAt", "INTEGER", Required},
          {"statusRaw", "TEXT", Required},
          {"sealedErrorMessage", "TEXT", Optional, "errorMessage"},
          {"attachmentID", "TEXT", Optional},
          {"sealedAttachmentName", "TEXT", Optional, "attachmentName"},
          {"sealedToolSummary", "TEXT", Optional, "toolSummary"},
          {"sourceDomains", "TEXT", Optional},
          {"hitTokenLimit", "INTEGER", Optional},
          {"placeRaw", "TEXT", Optional},
          {"conversation", "TEXT", Optional}}},
        {"ImportedDocument",
         {{"id", "TEXT", Required},
          {"sealedFilename", "TEXT", Required, "filename"},
          {"fileExtension", "TEXT", Required},
          {"fileSizeBytes", "INTEGER", Required},
          {"extractedCharacterCount", "INTEGER", Required},
          {"wasTruncated", "INTEGER", Required},
          {"importedAt", "INTEGER", Required}}},
    }};
    return all;
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
            conditions.append("(" + text + "<>'' AND substr(" + text + ",1,6)<>char(1)||'KVT1:')");
    }
    return "(" + conditions.join(" OR ") + ")";
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
