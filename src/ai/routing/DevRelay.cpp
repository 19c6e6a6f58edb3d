#include "ai/routing/DevRelay.h"

#include <QUrl>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString nameOf(DevRelay::Loopback host)
{
    switch (host) {
    case DevRelay::Loopback::localhost:
        return u"localhost"_s;
    case DevRelay::Loopback::ipv4:
        return u"127.0.0.1"_s;
    }
    return {};
}

} // namespace

QString DevRelay::Origin::address() const
{
    return u"http://%1:%2"_s.arg(nameOf(host)).arg(port);
}

std::optional<DevRelay::Origin> DevRelay::origin(const QString &address)
{
    const QUrl url(address, QUrl::StrictMode);
    if (url.scheme() != "http"_L1 || url.port() <= 0)
        return std::nullopt;
    for (const Loopback host : {Loopback::localhost, Loopback::ipv4}) {
        if (url.host() == nameOf(host))
            return Origin{host, url.port()};
    }
    return std::nullopt;
}

} // namespace morvane
