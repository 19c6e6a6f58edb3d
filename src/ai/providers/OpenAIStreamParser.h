#pragma once

#include "ai/contract/AIMessage.h"
#include "ai/contract/ProviderError.h"

#include <QByteArrayView>
#include <QString>

#include <cstdint>
#include <optional>
#include <variant>
#include <vector>

namespace morvane {

// Reads what a chat-completions server sends: one line of an event stream at a time, or a whole JSON body.
// Stateless; any thread.
namespace OpenAIStreamParser {

struct Delta {
    QString text; // never empty
    bool operator==(const Delta &) const = default;
};

// One entry of a `tool_calls` list. What is missing may come in another fragment of the same index.
struct ToolCallFragment {
    std::int64_t index = 0;
    std::optional<QString> id;
    std::optional<QString> name;
    QString arguments;
    bool operator==(const ToolCallFragment &) const = default;
};

struct Finished {
    QString reason;
    bool operator==(const Finished &) const = default;
};

// The sentinel that closes a stream.
struct Done {
    bool operator==(const Done &) const = default;
};

// A piece of the model's reasoning, whose text is not kept.
struct Reasoned {
    bool operator==(const Reasoned &) const = default;
};

// The server tells of an error in the middle of its reply.
struct Failed {
    int status = 0;      // 0 when it gives none
    QString serverWords; // as ServerWords makes them
    bool operator==(const Failed &) const = default;
};

// A line that carried nothing usable.
struct Ignored {
    bool operator==(const Ignored &) const = default;
};

using ToolAwareEvent = std::variant<Delta, ToolCallFragment, Finished, Done, Reasoned, Failed, Ignored>;

// More than any model asks for at once, so that what a server sends cannot fill the memory.
inline constexpr std::size_t mostToolCalls = 256;

// The events of one line, in the order text, fragments, finished; never empty. Bytes that are no UTF-8 count
// as replacement characters. Throws ProviderError::tooManyCalls past `mostToolCalls`.
[[nodiscard]] std::vector<ToolAwareEvent> classify(QByteArrayView line);

// A reply that came in one JSON body.
struct Completion {
    QString text;
    std::vector<AIToolCall> toolCalls;
    std::optional<QString> finishReason;
    bool hasReasoning = false; // whose text is not kept

    [[nodiscard]] bool isEmpty() const { return text.isEmpty() && toolCalls.empty(); }
    bool operator==(const Completion &) const = default;
};

// The finish reasons that say a reply is not whole.
inline constexpr QLatin1StringView tokenLimit{"length"};
[[nodiscard]] std::optional<ProviderError::ReplyBroken> brokenBy(const QString &finishReason);

// Throws ProviderError: malformedResponse, and what the server says when the body tells of an error instead.
[[nodiscard]] Completion parseBody(QByteArrayView body);

} // namespace OpenAIStreamParser

} // namespace morvane
