#include "support/RoutedSession.h"

namespace morvane {

QCoro::Task<HttpResponse> RoutedSession::send(HttpRequest request, std::stop_token stop)
{
    const QUrl asked = request.url;
    m_asked.push_back(asked);
    const auto server = m_routes.find(asked.host());
    if (server == m_routes.end())
        throw TransportError(TransportError::Code::CannotConnect, QStringLiteral("No such host."));
    request.url = server->second;
    request.url.setPath(asked.path().isEmpty() ? QStringLiteral("/") : asked.path());
    request.url.setQuery(asked.query());
    const auto carrier = m_carrier; // outlives this object
    HttpResponse response = co_await carrier->send(std::move(request), stop);
    response.url = asked;
    co_return std::move(response);
}

} // namespace morvane
