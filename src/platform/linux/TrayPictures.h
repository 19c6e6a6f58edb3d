#pragma once

#include "platform/linux/TrayTypes.h"
#include "view_models/TrayIcon.h"

namespace morvane {

// The ghost of a tray icon, a drawing for each state.
namespace TrayPictures {

// Its name in the theme of icons; empty where it isn't installed, since a panel that was given a name may
// not look at the pictures. A symbolic drawing takes the panel's own colour.
[[nodiscard]] QString nameOf(TrayState state);

// The same drawing in the sizes that panels use. Nobody knows here what colour the panel has, so it is light
// with a dark edge.
[[nodiscard]] QList<TrayPicture> of(TrayState state);

} // namespace TrayPictures

} // namespace morvane
