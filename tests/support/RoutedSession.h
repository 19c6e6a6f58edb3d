#pragma once

#include "network/HttpSession.h"

#include <map>

namespace morvane {

// Plays the web's names to a caller: requests for a routed host go to the server given for it, over real
// sockets, and everything else can't be connected to. What the caller sees keeps the name.
class RoutedSession final : public HttpSession {
public:
    explicit RoutedSession(std::shared_ptr<HttpSession> carrier)
        : m_carrier(std::move(carrier))
    {}

    void route(const QString &host, const QUrl &server) { m_routes[host] = server; }

    [[nodiscard]] QCoro::Task<HttpResponse> send(HttpRequest request, std::stop_token stop) override;

    // What was asked for, by the caller's addresses.
    [[nodiscard]] const std::vector<QUrl> &asked() const { return m_asked; }

private:
    std::shared_ptr<HttpSession> m_carrier;
    std::map<QString, QUrl> m_routes;
    std::vector<QUrl> m_asked;
};

} // namespace morvane
