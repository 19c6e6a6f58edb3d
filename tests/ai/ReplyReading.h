#pragma once

#include "ai/contract/AIStreamEvent.h"
#include "ai/contract/ProviderError.h"
#include "async/AsyncStream.h"
#include "support/Await.h"

namespace morvane {

// A stream of a reply's events, read to its end.
template <typename Event>
struct EventsRead {
    std::vector<Event> events;
    std::optional<ProviderError> error;
};

struct Reply : EventsRead<AIStreamEvent> {
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

template <typename Read, typename Event>
QCoro::Task<Read> readTask(AsyncStream<Event> stream)
{
    Read read;
    try {
        while (auto event = co_await stream.next())
            read.events.push_back(std::move(*event));
    } catch (const ProviderError &error) {
        read.error = error;
    }
    co_return read;
}

inline Reply readReply(AsyncStream<AIStreamEvent> stream)
{
    return TestWait::await(readTask<Reply>(std::move(stream)));
}

} // namespace morvane
