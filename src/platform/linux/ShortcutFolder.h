#pragma once

#include "services/ShortcutRunning.h"

namespace morvane {

// The folder that holds a person's shortcuts: programs of theirs, each known by the whole name of its file.
// Pure but for the file system, which may lie behind a network; any thread.
namespace ShortcutFolder {

using Refusal = DesktopActionError::ShortcutRefused;

struct Listing {
    int status = 0; // errno of what went wrong; 0 for nothing
    std::vector<ShortcutRunning::Shortcut> shortcuts;
};

// At most so many, by name, and without hidden files and names that can't be spelled in a line of text.
inline constexpr std::size_t most = 500;

[[nodiscard]] Listing list(const QString &folder);

// The program of that name. Throws DesktopActionError: not found, or why it isn't run.
[[nodiscard]] QString program(const QString &folder, const QString &name);

// What a script says of itself: its first line of comment. Empty for none, and for what is no script.
[[nodiscard]] QString comment(const QString &path);

} // namespace ShortcutFolder

} // namespace morvane
