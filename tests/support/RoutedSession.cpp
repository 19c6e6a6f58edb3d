#include "support/RoutedSession.h"

namespace morvane {

QCoro::Task<HttpResponse> RoutedSession::send(HttpRequest request, std::stop_token stop)
{
    const QUrl asked = request.url;
    m_asked.push_back(asked);
    const auto server = m_routes.find(asked.host());
    QUrl target; // an invalid one is refused
    if (server != m_routes.end()) {
        target = server->second;
        target.setPath(asked.path().isEmpty() ? QStringLiteral("/") : asked.path());
        target.setQuery(asked.query());
    }
    request.url = target;
    return carry(m_carrier, request, asked, stop);
}

QCoro::Task<HttpResponse> RoutedSession::carry(std::shared_ptr<HttpSession> carrier, HttpRequest request,
                                               QUrl asked, std::stop_token stop)
{
    if (!request.url.isValid())
        throw TransportError(TransportError::Code::CannotConnect, QStringLiteral("No such host."));
    HttpResponse response = co_await carrier->send(request, stop);
    response.url = asked;
    co_return std::move(response);
}

} // namespace morvane
