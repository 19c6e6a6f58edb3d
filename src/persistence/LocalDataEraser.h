#pragma once

#include "utils/files/SupportFolders.h"

#include <QLatin1StringView>
#include <QStringList>

#include <optional>
#include <span>

namespace morvane {

// Which files go when the person deletes all that the application saved on this machine, and which stay. Any
// thread, while nothing has a store open.
namespace LocalDataEraser {

// One row of what goes from a support folder.
struct Entry {
    enum class Kind {
        file,     // of exactly this name
        prefixed, // every item whose name starts so: a store with its companions
        folder,   // whole, or all that is in it but one
    };
    Kind kind;
    QLatin1StringView name;
    QLatin1StringView keeping = {}; // of a folder's items; empty: the folder goes whole
};

[[nodiscard]] std::span<const Entry> table();

struct Removed {
    int count = 0;        // items, a folder being one
    QStringList leftover; // paths of those that could not be removed

    Removed &operator+=(const Removed &more);
};

// Applies the table to one support folder. What can't be removed is logged and doesn't hold up the rest; a
// folder that can't be listed has nothing to remove. Links go themselves, and not what they point to.
[[nodiscard]] Removed remove(const QString &folder);

// The table in every support folder, those of older builds included, with what stands outside of them: an
// older build's store where it is ours, its settings, and what was put aside at a start without its key.
[[nodiscard]] Removed removeAll(const SupportFolders &folders);

// What the erasure can't reach, a full line each, for the person to read before they say yes.
[[nodiscard]] QStringList limits();
// The same in short, beside the button.
[[nodiscard]] QString shortLimits();

} // namespace LocalDataEraser

} // namespace morvane
