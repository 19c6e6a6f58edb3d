#pragma once

#include <QByteArray>

namespace morvane {

// Judges addresses by their bytes, for requests that must stay off every private network. Pure.
namespace PublicAddress {

// 4 or 16 bytes in network order. False for this machine, private and carrier-shared networks, link-local
// and unassigned ranges, multicast, and for an IPv6 form of such an IPv4 address. Any other size is false.
[[nodiscard]] bool isPublic(const QByteArray &bytes);

} // namespace PublicAddress

} // namespace morvane
