#include "network/EgressGate.h"

#include "network/PrivateNetworkAddress.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

namespace morvane {

using namespace Qt::StringLiterals;

std::optional<QString> EgressGate::refusalReason(const QUrl &url, Reach reach)
{
    if (url.isEmpty() || !url.isValid())
        return u"a request with no address"_s;
    const QString scheme = url.scheme().toLower();
    if (scheme != "https"_L1 && scheme != "http"_L1)
        return (scheme.isEmpty() ? u"that"_s : scheme) + u" is not a web address"_s;
    const QString host = hostOf(url);
    if (host.isEmpty())
        return u"a request with no host"_s;
    if (reach == Reach::PrivateOnly && !PrivateNetworkAddress::isNear(host))
        return host + u" is not on this %1 or your network, and this request carries your own data"_s.arg(
                          DesktopWords::here().device);
    return std::nullopt;
}

QString EgressGate::hostOf(const QUrl &url)
{
    return url.host(QUrl::FullyEncoded);
}

QString EgressGate::refusal(const QString &reason)
{
    return u"%1 did not send this request: %2."_s.arg(Product::name, reason);
}

} // namespace morvane
