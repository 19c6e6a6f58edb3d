#include "services/PageAddress.h"

#include "network/EgressGate.h"
#include "network/PrivateNetworkAddress.h"
#include "network/PublicAddress.h"
#include "services/WebAccessError.h"
#include "utils/text/Text.h"

#include <algorithm>
#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype tooManyCharacters = 2001;

// Four numbers as people write them, "010" being ten. Other notations are left to the resolver, which reads
// them as the connection would.
std::optional<QByteArray> dottedDecimal(const QString &text)
{
    const auto parts = QStringView(text).split(u'.');
    if (parts.size() != 4)
        return std::nullopt;
    QByteArray bytes;
    for (const QStringView part : parts) {
        const bool isDigits = !part.isEmpty() && std::all_of(part.begin(), part.end(),
                                                             [](QChar c) { return c >= u'0' && c <= u'9'; });
        bool fits = false;
        const uint value = part.toUInt(&fits);
        if (!isDigits || !fits || value > 255)
            return std::nullopt;
        bytes.append(static_cast<char>(value));
    }
    return bytes;
}

} // namespace

QUrl PageAddress::parsed(const QString &text)
{
    using Plain = WebAccessError::Plain;
    if (Text::hasAtLeast(text, tooManyCharacters))
        throw WebAccessError(Plain::invalidURL);
    const QUrl url(Text::trimmed(text));
    if (!url.isValid() || url.scheme().isEmpty() || url.host().isEmpty())
        throw WebAccessError(Plain::invalidURL);
    if (url.scheme().toLower() != "https"_L1)
        throw WebAccessError(Plain::insecureURL);
    return url;
}

QString PageAddress::host(const QUrl &url)
{
    return PrivateNetworkAddress::normalisedHost(EgressGate::hostOf(url));
}

bool PageAddress::isPrivate(const QString &host, const Subnets &machines)
{
    static constexpr std::array localEndings{".local"_L1, ".internal"_L1, ".localhost"_L1, ".home.arpa"_L1};
    return host == "localhost"_L1 || !host.contains(u'.') || isPrivateLiteral(host, machines) ||
           std::any_of(localEndings.begin(), localEndings.end(),
                       [&](QLatin1StringView ending) { return host.endsWith(ending); });
}

bool PageAddress::isPrivateLiteral(const QString &text, const Subnets &machines)
{
    auto bytes = dottedDecimal(text);
    if (!bytes)
        bytes = PrivateNetworkAddress::addressBytes(text);
    return bytes && !PublicAddress::isPublic(*bytes, machines);
}

} // namespace morvane
