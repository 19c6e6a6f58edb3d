#pragma once

#include <QDBusConnection>

#include <optional>

// The two message buses of this machine, each none where nobody answers on it. GUI thread.
namespace morvane::MachineBuses {

[[nodiscard]] std::optional<QDBusConnection> session();
[[nodiscard]] std::optional<QDBusConnection> system();

} // namespace morvane::MachineBuses
