#pragma once

#include "persistence/Database.h"
#include "persistence/FileLock.h"

#include <QString>

#include <array>
#include <optional>
#include <stop_token>

namespace morvane {

// The chat store as files: the database with its "-wal" and "-shm" companions, for their owner only.
namespace StoreFiles {

// The file and its companions, whether they exist or not.
[[nodiscard]] std::array<QString, 3> withCompanions(const QString &path);

[[nodiscard]] bool exists(const QString &path);

// Removes what exists of the file and its companions; false when something could not be removed.
bool remove(const QString &path);

// Waits until a file, or the names in a folder, have reached the disk.
[[nodiscard]] bool syncToDisk(const QString &path);

// Owner read and write only, for what exists of them.
void makePrivate(const QString &path);

// Which file this is a companion of; nothing when it is none by its name.
[[nodiscard]] std::optional<QString> ownerOf(const QString &path);

// Brings what companions hold of a database into it, so that it is one file and can be moved as one. Throws
// DatabaseError when that can't be, as when another process has it open; nothing is lost then.
void fold(const QString &path);

// The right to open the store at `path`: one process at a time, since two would each go on writing what they
// once read. Nothing while another holds it for all of `limit`. Throws FileError when it can't be had at all.
[[nodiscard]] std::optional<FileLock> lock(const QString &path, std::chrono::milliseconds limit);

// Opens the store for good, making it or bringing it up to date. A store of a later version, one that is not
// ours, one that is damaged and one that can't be written are refused before a byte of them changes. Throws
// DatabaseError or FileError.
[[nodiscard]] Database open(const QString &path);

enum class Condition { Whole, Damaged, Unknown };

// Reads through the store on a connection of its own, which neither writes nor keeps another from it. Any
// thread; for one that may take its time. Unknown when it can't be told, or was stopped.
[[nodiscard]] Condition examine(const QString &path, const std::stop_token &stop);

// Gives the store and its companions a name of their own beside the former, which is free then; whoever has
// the store open goes on with it under the new name. They go together: a process that dies midway leaves the
// set whole under one of the names. The new path; nothing when it could not be done, and all is as it was.
[[nodiscard]] std::optional<QString> setAside(const QString &path);

// Opens a store, or what is taken for one, to read it as it is. Its file stays untouched. Throws
// DatabaseError.
[[nodiscard]] Database openToRead(const QString &path);

} // namespace StoreFiles

} // namespace morvane
