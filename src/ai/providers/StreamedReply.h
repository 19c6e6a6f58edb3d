#pragma once

#include "ai/contract/AIStreamEvent.h"
#include "ai/providers/ReplyLines.h"
#include "ai/providers/ToolCallAccumulator.h"
#include "async/AsyncStream.h"

#include <QByteArray>

namespace morvane {

// One streamed reply as it grows: takes its lines and yields events at once. No text is gathered here.
class StreamedReply {
public:
    using Events = AsyncStream<AIStreamEvent>::Producer;

    // Lines that came before any content are kept up to about this many bytes, in case they turn out to be
    // one plain JSON body.
    static constexpr qsizetype rawBufferLimit = 0x80000;

    using Progress = ReplyLines::Progress;

    // Throws ProviderError past the accumulator's limits, and when the server tells that the reply is broken.
    Progress add(QByteArrayView line, Events &events);

    // What is due when reading has ended: the tool calls, then the note that the limit was hit. Throws
    // ProviderError when the reply has content and no end, or was spent on thinking.
    void finish(Events &events);

    // Text or a part of a tool call came.
    [[nodiscard]] bool hasContent() const { return m_hasContent; }

    // finish() yielded calls.
    [[nodiscard]] bool hasCalls() const { return m_hasCalls; }

    // The reply that a server sent as plain JSON although a stream was asked for; nothing when it didn't.
    [[nodiscard]] std::optional<OpenAIStreamParser::Completion> plainBody() const;

private:
    void end(const QString &reason);

    OpenAIStreamParser::ToolCallAccumulator m_accumulator;
    QByteArray m_raw;
    bool m_hasContent = false;
    bool m_hasCalls = false;
    bool m_hasReasoning = false;
    bool m_isTruncated = false;
    bool m_isEnded = false; // the server gave a reason or closed the stream
};

// The events of a reply that came whole, in the order of a streamed one. Throws ProviderError behind them
// when its finish reason says that it is broken.
void yieldCompletion(const OpenAIStreamParser::Completion &completion, StreamedReply::Events &events);

} // namespace morvane
