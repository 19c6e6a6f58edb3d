#pragma once

#include <QDBusConnection>

#include <optional>

namespace morvane {

// The name under which the desktop's portals remember what the person allowed. A program in a sandbox has
// one; any other has to tell its own (org.freedesktop.host.portal.Registry), once for a connection and before
// anything is asked on it.
namespace PortalIdentity {

// Doesn't wait: what is asked later on this connection comes later. An older desktop has no such registry and
// guesses.
void tell(std::optional<QDBusConnection> bus);

} // namespace PortalIdentity

} // namespace morvane
