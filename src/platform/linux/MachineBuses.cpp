#include "platform/linux/MachineBuses.h"

namespace morvane::MachineBuses {

namespace {

std::optional<QDBusConnection> connected(const QDBusConnection &bus)
{
    return bus.isConnected() ? std::optional(bus) : std::nullopt;
}

} // namespace

// Asking for the session's bus where none is named would start one.
std::optional<QDBusConnection> session()
{
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        return std::nullopt;
    return connected(QDBusConnection::sessionBus());
}

std::optional<QDBusConnection> system()
{
    return connected(QDBusConnection::systemBus());
}

} // namespace morvane::MachineBuses
