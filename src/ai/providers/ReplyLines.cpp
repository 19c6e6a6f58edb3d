#include "ai/providers/ReplyLines.h"

#include "ai/providers/LineSplitter.h"

namespace morvane {

namespace {

// Takes what a server still sends behind the end of its reply, which is hardly ever more than the end of the
// body. So the request ends as a complete one, and its connection is there for the next. Keeps no session
// alive: one that goes ends this too.
QCoro::Task<> letEnd(AsyncStream<QByteArray> body)
{
    constexpr qsizetype patience = 4096; // bytes
    qsizetype taken = 0;
    try {
        while (const auto piece = co_await body.next()) {
            taken += piece->size();
            if (taken > patience)
                break;
        }
    } catch (const std::exception &) {
        // The reply is complete; nobody waits for this.
    }
}

} // namespace

QCoro::Task<> ReplyLines::read(HttpResponse response, Reader reader, std::stop_token stop)
{
    LineSplitter lines(longest);
    while (auto piece = co_await response.body.next(stop)) {
        lines.add(std::move(*piece));
        while (const auto line = lines.next()) {
            throwIfStopped(stop);
            if (reader(*line) == Progress::done) {
                letEnd(std::move(response.body));
                co_return;
            }
        }
    }
    throwIfStopped(stop);
    if (const auto line = lines.last())
        reader(*line);
}

} // namespace morvane
