#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace morvane {

// Where the system prompt of a turn comes from, besides its rules. Each may be absent.
struct PromptParts {
    std::function<QString()> instructions;         // absent: the default ones
    std::function<std::optional<QString>()> notes; // what is remembered about the person

    // The instructions and the application's name.
    [[nodiscard]] QString identity() const;

    // Nothing when there are none.
    [[nodiscard]] std::optional<QString> notesBlock() const;
};

} // namespace morvane
