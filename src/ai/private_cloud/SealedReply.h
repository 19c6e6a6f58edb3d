#pragma once

#include "ai/contract/AIStreamEvent.h"
#include "ai/private_cloud/ThinkingFilter.h"
#include "ai/private_cloud/ToolBlockScanner.h"
#include "ai/private_cloud/VeniceE2EESession.h"
#include "ai/providers/ReplyLines.h"
#include "async/AsyncStream.h"

namespace morvane {

// One sealed reply as it grows: takes its lines, opens what is sealed, and yields events at once. What comes
// unsealed is counted and dropped, never shown. The session's key goes with this object.
class SealedReply {
public:
    using Events = AsyncStream<AIStreamEvent>::Producer;
    using Progress = ReplyLines::Progress;

    explicit SealedReply(VeniceE2EESession session)
        : m_session(std::move(session))
    {}

    // Throws ProviderError: enclaveUnverified for a sealed piece that doesn't open, replyTooLarge and
    // tooManyCalls past the limits that calls have everywhere.
    Progress add(QByteArrayView line, Events &events);

    // What is due when reading has ended: the rest of the text, the tool calls, the note that the limit was
    // hit. Throws ProviderError for a reply of which nothing came, or nothing sealed.
    void finish(Events &events);

private:
    void open(const QString &content, Events &events);
    void show(const QString &text, Events &events);
    void yieldCalls(Events &events);
    void throwUnlessSealed() const;

    VeniceE2EESession m_session;
    ThinkingFilter m_filter;
    ToolBlockScanner m_scanner;
    qsizetype m_block = 0; // characters behind a tool block's marker
    int m_opened = 0;
    int m_unsealed = 0;
    bool m_hasText = false;
    bool m_hasThought = false;
    bool m_isTruncated = false;
};

} // namespace morvane
