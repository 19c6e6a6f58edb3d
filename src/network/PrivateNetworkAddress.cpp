#include "network/PrivateNetworkAddress.h"

#include "utils/text/DesktopWords.h"
#include "utils/text/Text.h"

#include <QLatin1StringView>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <memory>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Stands for the domain of the product's own services; the real one isn't public.
constexpr QLatin1StringView serviceDomain{"service.morvane.invalid"};

constexpr qsizetype ipv4Size = 4;
constexpr qsizetype ipv6Size = 16;

std::uint8_t byteAt(const QByteArray &bytes, qsizetype index)
{
    return static_cast<std::uint8_t>(bytes[index]);
}

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

bool isLabelCharacter(QChar c)
{
    return isDigit(c) || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'-';
}

std::optional<std::uint8_t> octet(QStringView text)
{
    const bool isShaped =
        !text.isEmpty() && text.size() <= 3 && std::all_of(text.begin(), text.end(), isDigit);
    if (!isShaped || (text.size() > 1 && text.front() == u'0'))
        return std::nullopt;
    const int value = text.toInt();
    return value <= 255 ? std::optional(static_cast<std::uint8_t>(value)) : std::nullopt;
}

std::optional<QByteArray> ipv4Bytes(QStringView text)
{
    const auto parts = text.split(u'.');
    if (parts.size() != ipv4Size)
        return std::nullopt;
    QByteArray bytes;
    for (const QStringView part : parts) {
        const auto value = octet(part);
        if (!value)
            return std::nullopt;
        bytes.append(static_cast<char>(*value));
    }
    return bytes;
}

std::optional<QByteArray> ipv6Bytes(QStringView text)
{
    // A zero character would end the text for inet_pton alone.
    if (!text.contains(u':') || text.contains(QChar(0)))
        return std::nullopt;
    QByteArray bytes(ipv6Size, '\0');
    if (inet_pton(AF_INET6, text.toUtf8().constData(), bytes.data()) != 1)
        return std::nullopt;
    return bytes;
}

bool isPrivateIPv4(const QByteArray &bytes)
{
    const std::uint8_t first = byteAt(bytes, 0);
    const std::uint8_t second = byteAt(bytes, 1);
    return bytes == QByteArray(ipv4Size, '\0') || first == 10 || first == 127 ||
           (first == 169 && second == 254) || (first == 172 && second >= 16 && second <= 31) ||
           (first == 192 && second == 168);
}

bool isPrivateIPv6(const QByteArray &bytes)
{
    const std::uint8_t first = byteAt(bytes, 0);
    const std::uint8_t second = byteAt(bytes, 1);
    if (first == 0xFC || first == 0xFD || (first == 0xFE && second >= 0x80 && second <= 0xBF))
        return true;
    if (bytes.first(15) == QByteArray(15, '\0'))
        return byteAt(bytes, 15) <= 1; // :: and ::1
    const QByteArray mapped = QByteArray(10, '\0') + QByteArray(2, '\xFF');
    return bytes.startsWith(mapped) && isPrivateIPv4(bytes.last(ipv4Size));
}

bool isPrivateAddress(const QByteArray &bytes)
{
    return bytes.size() == ipv4Size ? isPrivateIPv4(bytes) : isPrivateIPv6(bytes);
}

bool sharesPrefix(const QByteArray &address, const PrivateNetworkAddress::Subnet &subnet)
{
    if (address.size() != subnet.bytes.size() || subnet.prefixLength <= 0 ||
        subnet.prefixLength > 8 * address.size())
        return false;
    const qsizetype whole = subnet.prefixLength / 8;
    const int rest = subnet.prefixLength % 8;
    if (address.first(whole) != subnet.bytes.first(whole))
        return false;
    const auto mask = static_cast<std::uint8_t>(0xFF00U >> rest);
    return rest == 0 || (byteAt(address, whole) & mask) == (byteAt(subnet.bytes, whole) & mask);
}

// The address inside a socket address of either family; empty for any other.
QByteArray bytesOf(const sockaddr *address)
{
    if (address->sa_family == AF_INET) {
        sockaddr_in in{};
        std::memcpy(&in, address, sizeof in);
        return {reinterpret_cast<const char *>(&in.sin_addr), ipv4Size};
    }
    if (address->sa_family == AF_INET6) {
        sockaddr_in6 in{};
        std::memcpy(&in, address, sizeof in);
        return {reinterpret_cast<const char *>(&in.sin6_addr), ipv6Size};
    }
    return {};
}

// Wired, wireless and bridge interfaces, by the prefixes that the kernel and udev give them. Tunnels and
// container networks have other names and don't count.
bool isLocalInterface(const ifaddrs &interface)
{
    static constexpr std::array prefixes{"en", "eth", "wl", "bridge"};
    const unsigned kind = interface.ifa_flags & (IFF_UP | IFF_LOOPBACK | IFF_POINTOPOINT);
    const QByteArrayView name(interface.ifa_name);
    return kind == IFF_UP && interface.ifa_addr != nullptr && interface.ifa_netmask != nullptr &&
           std::any_of(prefixes.begin(), prefixes.end(),
                       [&](const char *prefix) { return name.startsWith(prefix); });
}

std::optional<PrivateNetworkAddress::Subnet> subnetOf(const ifaddrs &interface)
{
    const QByteArray bytes = bytesOf(interface.ifa_addr);
    const QByteArray mask = bytesOf(interface.ifa_netmask);
    int prefix = 0;
    for (const char byte : mask)
        prefix += std::popcount(static_cast<std::uint8_t>(byte));
    // A wider mask would call too much of the world local, and a host route says nothing.
    const int least = bytes.size() == ipv4Size ? 16 : 48;
    if (bytes.isEmpty() || prefix < least || prefix >= 8 * bytes.size())
        return std::nullopt;
    return PrivateNetworkAddress::Subnet{bytes, prefix};
}

QString trimmedBrackets(QString text)
{
    const auto isBracket = [](QChar c) { return c == u'[' || c == u']'; };
    while (!text.isEmpty() && isBracket(text.front()))
        text.remove(0, 1);
    while (!text.isEmpty() && isBracket(text.back()))
        text.chop(1);
    return text;
}

} // namespace

QString PrivateNetworkAddress::labelOf(HostClass hostClass)
{
    switch (hostClass) {
    case HostClass::thisMac:
        return u"This %1"_s.arg(DesktopWords::here().device);
    case HostClass::localNetwork:
        return u"Your network"_s;
    case HostClass::ownService:
        return u"Morvane"_s;
    case HostClass::thirdParty:
        return u"Third party"_s;
    }
    return {};
}

QString PrivateNetworkAddress::normalisedHost(const QString &host)
{
    QString text = Text::trimmed(host).toLower();
    if (text.size() >= 2 && text.startsWith(u'[') && text.endsWith(u']'))
        text = text.sliced(1, text.size() - 2);
    if (text.size() >= 2 && text.endsWith(u'.'))
        text.chop(1);
    return text;
}

std::optional<QByteArray> PrivateNetworkAddress::addressBytes(const QString &host)
{
    const QString normalised = normalisedHost(host);
    const qsizetype zone = normalised.indexOf(u'%');
    const QStringView text = QStringView(normalised).first(zone < 0 ? normalised.size() : zone);
    if (const auto bytes = ipv4Bytes(text))
        return bytes;
    return ipv6Bytes(text);
}

std::optional<bool> PrivateNetworkAddress::isPrivateLiteral(const QString &host)
{
    const auto bytes = addressBytes(host);
    return bytes ? std::optional(isPrivateAddress(*bytes)) : std::nullopt;
}

bool PrivateNetworkAddress::isLocalName(const QString &host)
{
    static constexpr QLatin1StringView ending{".local"};
    if (!host.endsWith(ending))
        return false;
    const auto labels = QStringView(host).chopped(ending.size()).split(u'.');
    return std::all_of(labels.begin(), labels.end(), [](QStringView label) {
        return !label.isEmpty() && std::all_of(label.begin(), label.end(), isLabelCharacter);
    });
}

bool PrivateNetworkAddress::isInside(const QString &host, const std::vector<Subnet> &subnets)
{
    const auto bytes = addressBytes(host);
    return bytes && isInside(*bytes, subnets);
}

bool PrivateNetworkAddress::isInside(const QByteArray &address, const std::vector<Subnet> &subnets)
{
    return isPrivateAddress(address) ||
           std::any_of(subnets.begin(), subnets.end(),
                       [&](const Subnet &subnet) { return sharesPrefix(address, subnet); });
}

std::vector<PrivateNetworkAddress::Subnet> PrivateNetworkAddress::machineSubnets()
{
    ifaddrs *list = nullptr;
    if (getifaddrs(&list) != 0)
        return {};
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owner(list, freeifaddrs);
    std::vector<Subnet> subnets;
    for (const ifaddrs *interface = list; interface != nullptr; interface = interface->ifa_next) {
        if (!isLocalInterface(*interface))
            continue;
        if (const auto subnet = subnetOf(*interface))
            subnets.push_back(*subnet);
    }
    return subnets;
}

QStringList PrivateNetworkAddress::resolve(const QString &name)
{
    if (name.contains(QChar(0))) // would cut the name short for the resolver
        return {};
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo *list = nullptr;
    if (getaddrinfo(name.toUtf8().constData(), nullptr, &hints, &list) != 0)
        return {};
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(list, freeaddrinfo);
    QStringList addresses;
    for (const addrinfo *result = list; result != nullptr; result = result->ai_next) {
        std::array<char, NI_MAXHOST> text{}; // 1,025
        if (getnameinfo(result->ai_addr, result->ai_addrlen, text.data(), text.size(), nullptr, 0,
                        NI_NUMERICHOST) == 0)
            addresses.append(QString::fromLatin1(text.data()));
    }
    return addresses;
}

PrivateNetworkAddress::HostClass PrivateNetworkAddress::classify(const QString &host)
{
    if (host.isEmpty())
        return HostClass::thirdParty;
    const QString trimmed = trimmedBrackets(host.toLower());
    static constexpr std::array ownNames{"localhost"_L1, "127.0.0.1"_L1, "::1"_L1, "0.0.0.0"_L1};
    if (std::find(ownNames.begin(), ownNames.end(), trimmed) != ownNames.end())
        return HostClass::thisMac;
    const QString normalised = normalisedHost(trimmed);
    if (normalised == "localhost"_L1)
        return HostClass::localNetwork;
    const auto literal = isPrivateLiteral(normalised);
    if (literal ? *literal : isLocalName(normalised))
        return HostClass::localNetwork;
    if (trimmed == serviceDomain || trimmed.endsWith(u'.' + QString(serviceDomain)))
        return HostClass::ownService;
    return HostClass::thirdParty;
}

bool PrivateNetworkAddress::isNear(const QString &host)
{
    switch (classify(host)) {
    case HostClass::thisMac:
    case HostClass::localNetwork:
        return true;
    case HostClass::ownService:
    case HostClass::thirdParty:
        return false;
    }
    return false;
}

} // namespace morvane
