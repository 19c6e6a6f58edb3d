#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace morvane {

// Judges from the text of a host alone what counts as local. Pure, but for listing the machine's subnets and
// resolving a name.
namespace PrivateNetworkAddress {

struct Subnet {
    QByteArray bytes; // 4 or 16, network order
    int prefixLength = 0;
};

enum class HostClass { thisMac, localNetwork, ownService, thirdParty };
[[nodiscard]] QString labelOf(HostClass hostClass);

// Trimmed of whitespace, lower-cased, without surrounding brackets and one trailing dot.
[[nodiscard]] QString normalisedHost(const QString &host);

// 4 bytes of a strict dotted quad or 16 of an IPv6 literal (a zone is cut off).
[[nodiscard]] std::optional<QByteArray> addressBytes(const QString &host);

// True for a private literal, false for a public one, nothing when the host is no literal.
[[nodiscard]] std::optional<bool> isPrivateLiteral(const QString &host);

// A name of ASCII labels under ".local".
[[nodiscard]] bool isLocalName(const QString &host);

[[nodiscard]] bool isInside(const QString &host, const std::vector<Subnet> &subnets);

// The same for 4 or 16 bytes in network order.
[[nodiscard]] bool isInside(const QByteArray &address, const std::vector<Subnet> &subnets);

[[nodiscard]] std::vector<Subnet> machineSubnets();

// Numeric addresses of a name by the system's resolver. Blocks; call it off the GUI thread.
[[nodiscard]] QStringList resolve(const QString &name);

[[nodiscard]] HostClass classify(const QString &host);

// This machine or the local network: the one judgement of a host by its text, for what the window says of a
// place, for the addresses that may be entered without https, for the gate and for the ledger's rows. A name
// under ".local" is near: it is for the local network alone (RFC 6762), and HttpExchange connects to what is
// near by name only where its address is near as well. So a name that leads outside is refused at its socket,
// rather than called a service here and a neighbour there.
[[nodiscard]] bool isNear(const QString &host);

} // namespace PrivateNetworkAddress

} // namespace morvane
