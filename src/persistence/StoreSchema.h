#pragma once

#include "persistence/Database.h"

// The tables of the chat store. Text columns hold sealed text only; their names changed when sealing came,
// and a store with the former names is brought up to date by renaming, with its values as they are.
namespace StoreSchema {

// 1.0.0, kept as SQLite's user_version: two digits for each part below the first.
inline constexpr std::int64_t version = 1'00'00;

// The first six characters of every sealed text.
inline constexpr QByteArrayView sealMarker{"\x01KVT1:"};

enum class Recognition {
    Empty,   // nothing in it yet
    Known,   // this schema, or an older one that can be brought up to date
    Newer,   // written by a later version
    Foreign, // not a chat store
};

// Reads only.
[[nodiscard]] Recognition recognize(Database &database);

// Makes the tables, or brings them up to date, in one transaction. For an empty or known store.
void prepare(Database &database);

} // namespace StoreSchema
