#pragma once

#include "ai/contract/AIMessage.h"

#include <QString>

#include <variant>

namespace morvane {

// An event of one reply that may call tools, as the chat shows it.
namespace Agent {

struct Text {
    QString piece;
    bool operator==(const Text &) const = default;
};

// The last `count` characters of the shown text no longer belong to the reply.
struct RetractText {
    qsizetype count = 0;
    bool operator==(const RetractText &) const = default;
};

struct ToolStarted {
    AIToolCall call;
    bool operator==(const ToolStarted &) const = default;
};

struct ToolFinished {
    AIToolCall call;
    AIToolResult result;
    bool operator==(const ToolFinished &) const = default;
};

// The model is reasoning and no text is flowing yet.
struct Thinking {
    bool operator==(const Thinking &) const = default;
};

// The final reply hit the output limit.
struct TruncatedByTokenLimit {
    bool operator==(const TruncatedByTokenLimit &) const = default;
};

// The server takes no tools, and what follows is answered without them.
struct ToolsRejected {
    bool operator==(const ToolsRejected &) const = default;
};

} // namespace Agent

using AgentEvent = std::variant<Agent::Text, Agent::RetractText, Agent::ToolStarted, Agent::ToolFinished,
                                Agent::Thinking, Agent::TruncatedByTokenLimit, Agent::ToolsRejected>;

} // namespace morvane
