#pragma once

#include "ai/contract/AIStreamEvent.h"
#include "ai/contract/ProviderError.h"
#include "async/AsyncStream.h"
#include "support/Await.h"

namespace morvane {

// A reply read to its end.
struct Reply {
    std::vector<AIStreamEvent> events;
    std::optional<ProviderError> error;

    [[nodiscard]] QString text() const
    {
        QString all;
        for (const AIStreamEvent &event : events) {
            if (const auto *text = std::get_if<AIStream::Text>(&event))
                all += text->piece;
        }
        return all;
    }
};

inline QCoro::Task<Reply> readReplyTask(AsyncStream<AIStreamEvent> stream)
{
    Reply reply;
    try {
        while (auto event = co_await stream.next())
            reply.events.push_back(std::move(*event));
    } catch (const ProviderError &error) {
        reply.error = error;
    }
    co_return reply;
}

inline Reply readReply(AsyncStream<AIStreamEvent> stream)
{
    return TestWait::await(readReplyTask(std::move(stream)));
}

} // namespace morvane
