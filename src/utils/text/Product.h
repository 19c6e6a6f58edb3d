#pragma once

#include <QLatin1StringView>

namespace morvane {

// Names under which the product is known to people and to the desktop. Every user-visible text takes the
// product's name from here.
namespace Product {

inline constexpr QLatin1StringView name{"MorvaneGPT"};

// As servers are told and windows show it.
inline constexpr QLatin1StringView version{MORVANE_VERSION};

// Basename of the desktop file, icon and metainfo, and the Wayland app id.
inline constexpr QLatin1StringView desktopId{"ai.morvane.MorvaneGPT"};

// Keyring service, support folder, defaults domain and log subsystem. Older installs hold data under this
// name, so it never changes.
inline constexpr QLatin1StringView serviceName{"ai.morvane.macos"};

// Folder in the support directory that holds the chat store.
inline constexpr QLatin1StringView storeFolder{"Morvane"};

} // namespace Product

} // namespace morvane
