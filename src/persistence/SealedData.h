#pragma once

#include "utils/files/SupportFolders.h"

#include <QStringList>

class QDateTime;

namespace morvane {

// What has been sealed on this machine, whatever wrote it: texts of the chat stores, and files. A key must be
// there for it, and only for it.
namespace SealedData {

// A chat store that can't be read counts, since nobody knows what it holds.
[[nodiscard]] bool exists(const SupportFolders &folders);

// A folder beside the application's own for what is put aside at this moment; not there yet.
[[nodiscard]] QString folderAside(const SupportFolders &folders, const QDateTime &localTime);

// The paths of those that are there.
[[nodiscard]] QStringList foldersAside(const SupportFolders &folders);

// Moves the chat store with all that stands in its folder, the folders of older builds and every sealed file
// into `aside`; nothing is deleted, and an older build's store stays where it is. Before a store is opened.
// Throws FileError; what has moved by then stays aside, and calling again moves the rest.
void setAside(const SupportFolders &folders, const QString &aside);

} // namespace SealedData

} // namespace morvane
