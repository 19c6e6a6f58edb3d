#include "network/PublicAddress.h"

#include <cstdint>

namespace morvane {

namespace {

bool isPublicIPv4(const QByteArray &bytes)
{
    const auto first = static_cast<std::uint8_t>(bytes[0]);
    const auto second = static_cast<std::uint8_t>(bytes[1]);
    return first != 0 && first != 10 && first != 127 && first < 224 &&
           !(first == 100 && second >= 64 && second <= 127) && !(first == 169 && second == 254) &&
           !(first == 172 && second >= 16 && second <= 31) && !(first == 192 && second == 168);
}

bool isPublicIPv6(const QByteArray &bytes)
{
    // ::ffff:0:0/96, and 64:ff9b::/96 by which an IPv6-only network reaches IPv4 (RFC 6052).
    static const QByteArray mapped = QByteArray(10, '\0') + QByteArray::fromHex("ffff");
    static const QByteArray translated = QByteArray::fromHex("0064ff9b") + QByteArray(8, '\0');
    if (bytes.startsWith(mapped) || bytes.startsWith(translated))
        return isPublicIPv4(bytes.last(4));
    const auto first = static_cast<std::uint8_t>(bytes[0]);
    const auto second = static_cast<std::uint8_t>(bytes[1]);
    const bool isUniqueLocal = first == 0xFC || first == 0xFD;
    const bool isLocalScope = first == 0xFE && second >= 0x80; // link-local, and the former site-local
    return first != 0 && first != 0xFF && !isUniqueLocal && !isLocalScope;
}

} // namespace

bool PublicAddress::isPublic(const QByteArray &bytes)
{
    if (bytes.size() == 4)
        return isPublicIPv4(bytes);
    return bytes.size() == 16 && isPublicIPv6(bytes);
}

} // namespace morvane
