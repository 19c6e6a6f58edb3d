#pragma once

#include "utils/text/UserPresentableError.h"

#include <QString>

namespace morvane {

// What became of a call, as the model reads it.
struct ToolOutcome {
    QString content;
    bool isError = false;
    bool isDeclined = false; // it asked for a yes and got none

    bool operator==(const ToolOutcome &) const = default;
};

namespace ToolFailure {

// A failure is written as an instruction to the model. `text` follows "Error: ".
[[nodiscard]] ToolOutcome because(const QString &text);

// The words of an error and its remedy, whichever exist.
[[nodiscard]] QString wordsOf(const UserPresentableError &error);

} // namespace ToolFailure

} // namespace morvane
