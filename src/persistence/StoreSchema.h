#pragma once

#include "persistence/Database.h"

#include <array>
#include <vector>

namespace morvane {

// The tables of the chat store. Text columns hold sealed text only; their names changed when sealing came,
// and a store with the former names is brought up to date by renaming, with its values as they are.
namespace StoreSchema {

// 1.2.0, kept as SQLite's user_version: two digits for each part below the first.
inline constexpr qint64 version = 1'02'00;

enum class Recognition {
    Empty,   // nothing in it yet
    Known,   // this schema, or an older one that can be brought up to date
    Newer,   // written by a later version
    Foreign, // not a chat store
};

enum class Presence { Required, Optional };

struct Column {
    const char *name;
    const char *type;
    Presence presence;
    const char *formerName = nullptr; // from before its text was sealed
    bool sealed = false;

    [[nodiscard]] bool isSealed() const { return sealed; }
};

struct Table {
    const char *name;
    std::vector<Column> columns;
};

// Conversations, messages, documents.
[[nodiscard]] const std::array<Table, 3> &tables();

// What the columns are called in this store, in the table's order: by their former name when that is what it
// has, and empty for an optional one that it lacks.
[[nodiscard]] std::vector<QByteArray> storedNames(Database &database, const Table &table);

// Reads the head of the list of conversations, which a window shows first. Throws DatabaseError when it is
// damaged.
void readHead(Database &database);

// SQL that holds for rows with a text that isn't sealed; an index answers it.
[[nodiscard]] QByteArray holdsPlainText(QByteArrayView table);

// Whether any text of a store that is one of ours is sealed. Throws DatabaseError.
[[nodiscard]] bool holdsSealedText(Database &database);

// Reads only.
[[nodiscard]] Recognition recognize(Database &database);

// Makes the tables, or brings them up to date, in one transaction. For an empty or known store.
void prepare(Database &database);

} // namespace StoreSchema

} // namespace morvane
