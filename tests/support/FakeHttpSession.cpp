#include "support/FakeHttpSession.h"

#include <algorithm>
#include <stdexcept>

namespace morvane {

void FakeHttpSession::answer(int status, QByteArray body)
{
    Answer next;
    next.status = status;
    next.pieces.push_back(std::move(body));
    answer(std::move(next));
}

QCoro::Task<HttpResponse> FakeHttpSession::send(HttpRequest request, std::stop_token stop)
{
    throwIfStopped(stop);
    m_requests.push_back(request);
    if (m_answers.empty())
        throw std::logic_error("a request that the test did not expect");
    const Answer script = std::move(m_answers.front());
    m_answers.pop_front();
    if (script.neverAnswers) {
        auto [silence, end] = AsyncStream<int>::make();
        ++m_waiting;
        try {
            co_await silence.next(stop);
        } catch (const CancelledError &) {
            --m_waiting;
            throw;
        }
    }
    if (script.sendError)
        std::rethrow_exception(script.sendError);

    auto [body, producer] = AsyncStream<QByteArray>::make();
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
    return m_waiting + static_cast<int>(std::count_if(m_bodies.begin(), m_bodies.end(), [](const auto &body) {
               return !body.stopToken().stop_requested();
           }));
}

} // namespace morvane
