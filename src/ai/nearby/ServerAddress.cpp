#include "ai/nearby/ServerAddress.h"

#include "ai/contract/BaseURL.h"
#include "ai/contract/ProviderError.h"
#include "network/PrivateNetworkAddress.h"
#include "utils/text/Text.h"

#include <QUrl>

#include <optional>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestText = 500;
constexpr QLatin1StringView usualPath{"/v1"};

// What stands where in "host:port/path".
struct Place {
    QString host; // an IPv6 address in brackets
    QString port; // with its colon; empty for none
    QString path; // from its slash on, or empty
};

bool isIPv6(const QString &text)
{
    return text.contains(u':') && PrivateNetworkAddress::addressBytes(text).has_value();
}

Place placeIn(const QString &text)
{
    if (isIPv6(text))
        return text.startsWith(u'[') ? Place{text, {}, {}} : Place{u'[' + text + u']', {}, {}};
    const qsizetype slash = text.indexOf(u'/');
    const QString authority = slash < 0 ? text : text.first(slash);
    const qsizetype colon = authority.lastIndexOf(u':');
    const bool hasPort = colon > authority.lastIndexOf(u']');
    return {hasPort ? authority.first(colon) : authority,
            hasPort && colon + 1 < authority.size() ? authority.sliced(colon) : QString(),
            slash < 0 ? QString() : text.sliced(slash)};
}

bool isBareName(const QString &host)
{
    return !host.contains(u'.') && !host.startsWith(u'[') &&
           host.compare("localhost"_L1, Qt::CaseInsensitive) != 0;
}

// As it may stand in the settings; nothing when it can't.
std::optional<QString> usable(const QString &address)
{
    try {
        const QUrl url = BaseURL::validated(address);
        const bool isPlain =
            url.userInfo().isEmpty() && !url.hasQuery() && !url.hasFragment() && url.port() != 0;
        return isPlain ? std::optional(address) : std::nullopt;
    } catch (const ProviderError &) {
        return std::nullopt;
    }
}

} // namespace

QStringList ServerAddress::candidates(const QString &text, const std::vector<int> &ports)
{
    QString rest = Text::trimmed(text);
    if (rest.isEmpty() || rest.size() > longestText)
        return {};
    QString scheme = u"http://"_s;
    if (const qsizetype mark = rest.indexOf("://"_L1); mark >= 0) {
        scheme = rest.first(mark + 3).toLower();
        rest = rest.sliced(mark + 3);
    }
    Place place = placeIn(rest);
    if (isBareName(place.host))
        place.host += ".local"_L1;
    while (place.path.endsWith(u'/'))
        place.path.chop(1);
    const QString path = place.path.isEmpty() ? QString(usualPath) : place.path;

    QStringList portTexts;
    if (!place.port.isEmpty() || scheme == "https://"_L1)
        portTexts = {place.port};
    else
        for (const int port : ports)
            portTexts += u":%1"_s.arg(port);
    QStringList addresses;
    for (const QString &port : portTexts)
        if (const auto address = usable(scheme + place.host + port + path))
            addresses += *address;
    return addresses;
}

} // namespace morvane
