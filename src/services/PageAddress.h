#pragma once

#include "network/PrivateNetworkAddress.h"

#include <QString>
#include <QUrl>

#include <optional>

namespace morvane {

// Which addresses of the web may be read, as far as their text tells. Stricter than the gate: a page must not
// come from the local network even though the gate would let it. Pure.
namespace PageAddress {

using Subnets = std::vector<PrivateNetworkAddress::Subnet>;

// Throws WebAccessError for a text that is no https address with a host.
[[nodiscard]] QUrl parsed(const QString &text);

// Lower case, without brackets and a trailing dot.
[[nodiscard]] QString host(const QUrl &url);

// By the text of the host alone: a local name, one without a dot, or a private literal.
[[nodiscard]] bool isPrivate(const QString &host, const Subnets &machines);

// A numeric address that is not public, or in one of the machine's own subnets. Four decimal numbers count
// as one also with leading zeros.
[[nodiscard]] bool isPrivateLiteral(const QString &text, const Subnets &machines);

} // namespace PageAddress

} // namespace morvane
