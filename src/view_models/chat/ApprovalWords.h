#pragma once

#include "ai/contract/AIMessage.h"

#include <QString>

namespace morvane {

// What an approval card says about a call besides its verb.
namespace ApprovalWords {

// The words that would leave, in full: the query, the address, the name, or all arguments.
[[nodiscard]] QString detail(const AIToolCall &call);

// Where the words go; empty for calls that send nothing out.
[[nodiscard]] QString footnote(const AIToolCall &call, bool searchesWithOwnKey);

} // namespace ApprovalWords

} // namespace morvane
