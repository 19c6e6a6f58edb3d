#include "network/PublicAddress.h"

#include <optional>
#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;
using PrivateNetworkAddress::Subnet;

namespace {

using Ranges = std::vector<std::pair<QLatin1StringView, int>>;

std::vector<Subnet> subnetsOf(const Ranges &ranges)
{
    std::vector<Subnet> subnets;
    for (const auto &[address, prefixLength] : ranges)
        subnets.push_back({PrivateNetworkAddress::addressBytes(QString(address)).value(), prefixLength});
    return subnets;
}

// IANA's special-purpose registry (RFC 6890 and what changed it since), multicast and the reserved rest.
const std::vector<Subnet> &specialIPv4()
{
    static const std::vector<Subnet> subnets = subnetsOf({{"0.0.0.0"_L1, 8},
                                                          {"10.0.0.0"_L1, 8},
                                                          {"100.64.0.0"_L1, 10}, // shared by a carrier
                                                          {"127.0.0.0"_L1, 8},
                                                          {"169.254.0.0"_L1, 16},
                                                          {"172.16.0.0"_L1, 12},
                                                          {"192.0.0.0"_L1, 24},   // protocol assignments
                                                          {"192.0.2.0"_L1, 24},   // documentation
                                                          {"192.88.99.0"_L1, 24}, // former 6to4 relays
                                                          {"192.168.0.0"_L1, 16},
                                                          {"198.18.0.0"_L1, 15},   // benchmarks
                                                          {"198.51.100.0"_L1, 24}, // documentation
                                                          {"203.0.113.0"_L1, 24},  // documentation
                                                          {"224.0.0.0"_L1, 3}});
    return subnets;
}

// The same within 2000::/3, outside of which nothing is assigned to the public.
const std::vector<Subnet> &specialIPv6()
{
    static const std::vector<Subnet> subnets =
        subnetsOf({{"2001::"_L1, 23}, // protocol assignments: Teredo, benchmarks, ORCHID
                   {"2001:db8::"_L1, 32},
                   {"3fff::"_L1, 20}});
    return subnets;
}

bool isGlobalUnicast(const QByteArray &bytes)
{
    return (static_cast<unsigned char>(bytes[0]) & 0xE0) == 0x20;
}

// The IPv4 address that an IPv6 one leads to: ::ffff:0:0/96, 64:ff9b::/96 by which an IPv6-only network
// reaches IPv4 (RFC 6052), and 6to4, 2002::/16 (RFC 3056).
std::optional<QByteArray> embeddedIPv4(const QByteArray &bytes)
{
    static const QByteArray mapped = QByteArray(10, '\0') + QByteArray::fromHex("ffff");
    static const QByteArray translated = QByteArray::fromHex("0064ff9b") + QByteArray(8, '\0');
    static const QByteArray sixToFour = QByteArray::fromHex("2002");
    if (bytes.startsWith(mapped) || bytes.startsWith(translated))
        return bytes.last(4);
    return bytes.startsWith(sixToFour) ? std::optional(bytes.sliced(2, 4)) : std::nullopt;
}

bool isPublicIPv4(const QByteArray &bytes, const std::vector<Subnet> &ownSubnets)
{
    return !PrivateNetworkAddress::isInside(bytes, specialIPv4()) &&
           !PrivateNetworkAddress::isInside(bytes, ownSubnets);
}

} // namespace

bool PublicAddress::isPublic(const QByteArray &bytes, const std::vector<Subnet> &ownSubnets)
{
    if (bytes.size() == 4)
        return isPublicIPv4(bytes, ownSubnets);
    if (bytes.size() != 16)
        return false;
    const auto embedded = embeddedIPv4(bytes);
    if (embedded && !isPublicIPv4(*embedded, ownSubnets))
        return false;
    return (embedded || isGlobalUnicast(bytes)) && !PrivateNetworkAddress::isInside(bytes, specialIPv6()) &&
           !PrivateNetworkAddress::isInside(bytes, ownSubnets);
}

} // namespace morvane
