#pragma once

#include "ai/contract/AITool.h"

#include <QString>

#include <optional>
#include <vector>

namespace morvane {

// The system prompt of a turn: who the assistant is, the rules of the turn, and what it remembers.
namespace SystemPrompt {

// The instructions of a person who gave none.
[[nodiscard]] QString defaultPrompt();

// Instructions as every AIConfiguration holds them, with the assistant's name.
[[nodiscard]] QString identity(const QString &instructions);

// The rules of a turn that offers these tools. Built anew for each turn, since the tools change.
[[nodiscard]] QString toolInstructions(const std::vector<AITool> &tools);

// The whole. `memoryBlock` is given only where the turn may use the memory notes.
[[nodiscard]] QString ofTurn(const QString &identity, const std::vector<AITool> &tools,
                             const std::optional<QString> &memoryBlock);

} // namespace SystemPrompt

} // namespace morvane
