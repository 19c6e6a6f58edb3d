#pragma once

#include "persistence/Database.h"
#include "persistence/FileLock.h"

#include <QString>

#include <array>

namespace morvane {

// The chat store as files: the database with its "-wal" and "-shm" companions, for their owner only.
namespace StoreFiles {

// The file and its companions, whether they exist or not.
[[nodiscard]] std::array<QString, 3> withCompanions(const QString &path);

[[nodiscard]] bool exists(const QString &path);

// Removes what exists of the file and its companions; false when something could not be removed.
bool remove(const QString &path);

// Owner read and write only, for what exists of them.
void makePrivate(const QString &path);

// The right to open the store at `path`: one process at a time, since two would each go on writing what they
// once read. Nothing while another holds it for all of `limit`.
[[nodiscard]] std::optional<FileLock> lock(const QString &path, std::chrono::milliseconds limit);

// Opens the store for good, making it or bringing it up to date. A store of a later version, one that is not
// ours, one that is damaged and one that can't be written are refused before a byte of them changes. Throws
// DatabaseError or FileError.
[[nodiscard]] Database open(const QString &path);

// Opens a store, or what is taken for one, to read it as it is. Its file stays untouched. Throws
// DatabaseError.
[[nodiscard]] Database openToRead(const QString &path);

} // namespace StoreFiles

} // namespace morvane
