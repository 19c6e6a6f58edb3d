#pragma once

#include <QString>

namespace morvane {

class LocalDataVault;

// Notes of older builds, which kept them in three files beside the present one.
namespace MemoryFold {

// Merges the files that exist into `memory.md` of `directory` and deletes them. When one of them, or
// memory.md itself, can't be opened, everything stays as it is for the next start or unlock.
void run(const QString &directory, const LocalDataVault &vault);

} // namespace MemoryFold

} // namespace morvane
