#pragma once

#include "ai/contract/AIMessage.h"

#include <QUuid>

#include <variant>

namespace morvane {

// An event of one streaming reply.
namespace AIStream {

struct Text {
    QString piece;
    bool operator==(const Text &) const = default;
};

// The complete calls of the reply, once, when the reply is done.
struct ToolCalls {
    std::vector<AIToolCall> calls;
    bool operator==(const ToolCalls &) const = default;
};

// The reply stopped at the output-token limit.
struct TruncatedByTokenLimit {
    bool operator==(const TruncatedByTokenLimit &) const = default;
};

// The model is reasoning and no text is flowing yet.
struct Thinking {
    bool operator==(const Thinking &) const = default;
};

// The request was refused and went once more in another spelling, which a turn grants once.
struct Respelled {
    bool operator==(const Respelled &) const = default;
};

// The request went once more, or is a later one of its turn: another row of the proof ledger than the one the
// turn was opened with tells of the server that answers now.
struct Recorded {
    QUuid row;
    bool operator==(const Recorded &) const = default;
};

} // namespace AIStream

using AIStreamEvent = std::variant<AIStream::Text, AIStream::ToolCalls, AIStream::TruncatedByTokenLimit,
                                   AIStream::Thinking, AIStream::Respelled, AIStream::Recorded>;

} // namespace morvane
