#pragma once

#include "ai/contract/AIStreamEvent.h"
#include "ai/providers/ReplyLines.h"
#include "async/AsyncStream.h"

namespace morvane {

// One reply in Ollama's own interface as it grows: takes its lines and yields events at once.
class OllamaReply {
public:
    using Events = AsyncStream<AIStreamEvent>::Producer;

    // Throws ProviderError: modelError for an error that the server reports midway, and what passes our
    // limits.
    ReplyLines::Progress add(QByteArrayView line, Events &events);

    // What is due when reading has ended: the tool calls, then the note that the limit was hit. Throws
    // ProviderError when there was neither text nor a call, or no last line behind it.
    void finish(Events &events);

    // finish() yielded calls.
    [[nodiscard]] bool hasCalls() const { return m_hasCalls; }

private:
    void gather(std::vector<AIToolCall> calls);

    std::vector<AIToolCall> m_calls;
    qsizetype m_callCharacters = 0; // UTF-16 units
    std::optional<QString> m_doneReason;
    bool m_hasText = false;
    bool m_hasCalls = false;
    bool m_hasThought = false;
    bool m_isDone = false;
};

} // namespace morvane
