#include "network/Redirect.h"

#include <algorithm>
#include <array>
#include <span>

namespace morvane {

namespace {

bool isOneOf(QByteArrayView name, std::span<const QByteArrayView> names)
{
    return std::any_of(names.begin(), names.end(), [&](QByteArrayView candidate) {
        return name.compare(candidate, Qt::CaseInsensitive) == 0;
    });
}

bool isHarmless(const HttpHeader &header)
{
    static constexpr std::array<QByteArrayView, 7> names{
        "Accept", "Accept-Encoding", "Accept-Language", "Cache-Control",
        "Range",  "User-Agent",      "Content-Type",
    };
    return isOneOf(header.name, names);
}

bool describesBody(const HttpHeader &header)
{
    return header.name.toLower().startsWith("content-");
}

int portOf(const QUrl &url)
{
    return url.port(url.scheme() == QLatin1StringView("https") ? 443 : 80);
}

bool isSameOrigin(const QUrl &a, const QUrl &b)
{
    return a.scheme() == b.scheme() && a.host() == b.host() && portOf(a) == portOf(b);
}

bool becomesGet(const QByteArray &method, int status)
{
    return status == 303 ? method != "HEAD" : (status == 301 || status == 302) && method == "POST";
}

} // namespace

std::optional<QUrl> Redirect::target(int status, const std::vector<HttpHeader> &headers, const QUrl &base)
{
    static constexpr std::array statuses{301, 302, 303, 307, 308};
    if (std::find(statuses.begin(), statuses.end(), status) == statuses.end())
        return std::nullopt;
    const auto location = std::find_if(headers.begin(), headers.end(), [](const HttpHeader &header) {
        return header.name.compare("Location", Qt::CaseInsensitive) == 0;
    });
    if (location == headers.end())
        return std::nullopt;
    const QUrl relative = QUrl::fromEncoded(location->value, QUrl::TolerantMode);
    return relative.isValid() ? base.resolved(relative) : QUrl();
}

HttpRequest Redirect::following(HttpRequest request, int status, const QUrl &target)
{
    if (becomesGet(request.method, status)) {
        request.method = "GET";
        request.body.clear();
        std::erase_if(request.headers, describesBody);
    }
    if (!isSameOrigin(request.url, target))
        std::erase_if(request.headers, [](const HttpHeader &header) { return !isHarmless(header); });
    request.url = target;
    return request;
}

} // namespace morvane
