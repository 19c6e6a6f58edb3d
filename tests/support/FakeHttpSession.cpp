#include "support/FakeHttpSession.h"

#include <algorithm>
#include <stdexcept>

namespace morvane {

void FakeHttpSession::answer(int status, QByteArray body)
{
    answer({.status = status, .pieces = {std::move(body)}});
}

QCoro::Task<HttpResponse> FakeHttpSession::send(HttpRequest request, std::stop_token stop)
{
    throwIfStopped(stop);
    m_requests.push_back(request);
    if (m_answers.empty())
        throw std::logic_error("a request that the test did not expect");
    const Answer script = std::move(m_answers.front());
    m_answers.pop_front();
    auto [body, producer] = AsyncStream<QByteArray>::make();
    if (script.neverAnswers) {
        m_bodies.push_back(producer);
        co_await body.next(stop);
    }
    if (script.sendError)
        std::rethrow_exception(script.sendError);
    for (const QByteArray &piece : script.pieces)
        producer.yield(piece);
    if (script.bodyError)
        producer.fail(script.bodyError);
    else if (script.ending == Ending::finishes)
        producer.finish();
    else
        m_bodies.push_back(producer);
    HttpResponse response{script.status, request.url, {}, std::move(body)};
    co_return response;
}

int FakeHttpSession::openRequests() const
{
    return static_cast<int>(
        std::ranges::count_if(m_bodies, [](const auto &body) { return !body.stopToken().stop_requested(); }));
}

} // namespace morvane
