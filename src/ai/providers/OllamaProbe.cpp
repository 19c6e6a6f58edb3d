#include "ai/providers/OllamaProbe.h"

#include "ai/providers/ProviderFailure.h"
#include "ai/providers/ReplyLines.h"
#include "utils/text/Json.h"

namespace morvane {

OllamaProbe::OllamaProbe(std::shared_ptr<HttpSession> session, HttpRequest request, Clock &clock,
                         std::stop_token stop)
    : m_session(std::move(session))
    , m_request(std::move(request))
    , m_stop(stop)
    , m_requestStop(std::move(stop))
    , m_limit(clock.after(m_request.timeout,
                          [source = m_requestStop.source()]() mutable { source.request_stop(); }))
{}

QCoro::Task<std::optional<QJsonObject>> OllamaProbe::answer(std::shared_ptr<OllamaProbe> probe)
{
    std::optional<QJsonObject> object;
    if (!probe)
        co_return object;
    try {
        const std::stop_token limited = probe->m_requestStop.token();
        auto response = co_await probe->m_session->send(probe->m_request, limited);
        if (ProviderFailure::isSuccess(response.status)) {
            const QByteArray body = co_await readBody(std::move(response), ReplyLines::longest, limited);
            object = Json::parseObject(body);
        }
    } catch (const std::exception &) {
        // A server that answers otherwise, late or not at all doesn't speak the interface.
    }
    throwIfStopped(probe->m_stop);
    co_return object;
}

} // namespace morvane
