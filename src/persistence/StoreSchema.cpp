#include "persistence/StoreSchema.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

enum class Presence { Required, Optional };

struct Column {
    const char *name;
    const char *type;
    Presence presence;
    const char *formerName = nullptr;
};

struct Table {
    const char *name;
    std::vector<Column> columns;
};

// Every table has a rowid besides: it grows with each row, and so keeps the order in which rows were added.
const std::array<Table, 3> &tables()
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

using Names = std::set<std::string>;

// Names of the columns, empty for a table that isn't there.
Names columnsOf(Database &database, const Table &table)
{
    Names names;
    Statement statement = database.prepare("SELECT name FROM pragma_table_info(?)");
    statement.bind(QString::fromLatin1(table.name));
    while (statement.step())
        names.insert(statement.text().toStdString());
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

std::string declaration(const Column &column)
{
    std::string text = std::string(column.name) + " " + column.type;
    if (column.presence == Presence::Required)
        text += " NOT NULL";
    return text;
}

void create(Database &database, const Table &table)
{
    std::string sql = std::string("CREATE TABLE ") + table.name + "(rowid INTEGER PRIMARY KEY";
    for (const Column &column : table.columns)
        sql += ", " + declaration(column);
    database.execute((sql + ")").c_str());
}

void update(Database &database, const Table &table, const Names &present)
{
    const std::string alter = std::string("ALTER TABLE ") + table.name;
    for (const Column &column : table.columns) {
        if (present.contains(column.name))
            continue;
        const std::string change =
            has(present, column) ? std::string(" RENAME COLUMN ") + column.formerName + " TO " + column.name
                                 : " ADD COLUMN " + declaration(column);
        database.execute((alter + change).c_str());
    }
}

void prepareTables(Database &database)
{
    for (const Table &table : tables()) {
        const Names present = columnsOf(database, table);
        if (present.empty())
            create(database, table);
        else
            update(database, table, present);
        const std::string name = table.name;
        database.execute(("CREATE UNIQUE INDEX IF NOT EXISTS " + name + "_id ON " + name + "(id)").c_str());
    }
    database.execute("CREATE INDEX IF NOT EXISTS ChatMessage_conversation ON ChatMessage(conversation)");
    database.execute("CREATE INDEX IF NOT EXISTS Conversation_updatedAt ON Conversation(updatedAt)");
    database.execute(("PRAGMA user_version = " + std::to_string(StoreSchema::version)).c_str());
}

} // namespace

StoreSchema::Recognition StoreSchema::recognize(Database &database)
{
    if (database.integer("PRAGMA user_version") > version)
        return Recognition::Newer;
    if (database.integer("SELECT count(*) FROM sqlite_schema") == 0)
        return Recognition::Empty;
    for (const Table &table : tables()) {
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
