#pragma once

#include "ai/contract/AITool.h"

#include <QString>

#include <functional>
#include <optional>
#include <vector>

// What the system prompt of a turn is put together from. Each part comes from a room that may be absent.
struct PromptParts {
    std::function<QString()> instructions;                     // absent: the default ones
    std::function<QString(const std::vector<AITool> &)> rules; // of a turn that offers these tools
    std::function<std::optional<QString>()> notes;             // what is remembered about the person

    // The instructions and the application's name.
    [[nodiscard]] QString identity() const;

    // The notes, unless there are none.
    [[nodiscard]] std::optional<QString> notesBlock() const;

    [[nodiscard]] QString assembled(const std::vector<AITool> &tools,
                                    const std::optional<QString> &notesBlock) const;
};
