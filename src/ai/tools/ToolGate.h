#pragma once

#include "ai/tools/AbilityCatalogue.h"
#include "ai/tools/ToolArguments.h"
#include "ai/tools/TurnContext.h"

#include <variant>

namespace morvane {

class MemoryStore;

// Decides whether a call of an available ability runs, is refused, or waits for the person's yes.
namespace ToolGate {

struct Run {
    bool operator==(const Run &) const = default;
};

struct Refuse {
    QString reason; // as ToolFailure::because() takes it
    bool operator==(const Refuse &) const = default;
};

struct Ask {
    QString verb; // what the person is asked to approve
    bool offersChatWideYes = false;
    bool operator==(const Ask &) const = default;
};

using Decision = std::variant<Run, Refuse, Ask>;

// What the gates look at besides the call and its turn.
struct Facts {
    const std::set<QString> &searchAllowedChats;
    const MemoryStore &memory;
};

// Counts a `remember` in the turn; leaves everything else as it is.
[[nodiscard]] Decision decide(Ability ability, const ToolArguments &arguments, TurnContext &turn,
                              const Facts &facts);

} // namespace ToolGate

} // namespace morvane
