#pragma once

#include "network/PrivateNetworkAddress.h"

namespace morvane {

// Judges addresses by their bytes, for requests that must stay off every private network. Pure.
namespace PublicAddress {

// 4 or 16 bytes in network order. False for this machine, private and carrier-shared networks, link-local,
// documentation, other special and unassigned ranges, multicast, the machine's own subnets, and for an IPv6
// form of such an IPv4 address. Any other size is false.
[[nodiscard]] bool isPublic(const QByteArray &bytes,
                            const std::vector<PrivateNetworkAddress::Subnet> &ownSubnets);

} // namespace PublicAddress

} // namespace morvane
