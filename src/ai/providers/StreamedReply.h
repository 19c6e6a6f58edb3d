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

    // Throws ProviderError::malformedResponse past the accumulator's limits.
    Progress add(QByteArrayView line, Events &events);

    // What is due when reading has ended: the tool calls, then the note that the limit was hit.
    void finish(Events &events);

    // Text or a part of a tool call came.
    [[nodiscard]] bool hasContent() const { return m_hasContent; }

    // The reply that a server sent as plain JSON although a stream was asked for; nothing when it didn't.
    [[nodiscard]] std::optional<OpenAIStreamParser::Completion> plainBody() const;

private:
    OpenAIStreamParser::ToolCallAccumulator m_accumulator;
    QByteArray m_raw;
    bool m_hasContent = false;
    bool m_isTruncated = false;
};

// The events of a reply that came whole, in the order of a streamed one.
void yieldCompletion(const OpenAIStreamParser::Completion &completion, StreamedReply::Events &events);

} // namespace morvane
