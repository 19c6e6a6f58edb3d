#include "platform/linux/DesktopGlobalShortcuts.h"

#include "platform/linux/DesktopKind.h"
#include "platform/linux/MachineBuses.h"
#include "platform/linux/PortalGlobalShortcuts.h"
#include "platform/linux/X11GlobalShortcuts.h"

#include <QGuiApplication>

namespace morvane {

using namespace Qt::StringLiterals;

// An X server on a Wayland desktop gets a key only while one of its own windows has the keyboard.
std::unique_ptr<GlobalShortcutBinding> globalShortcutsOfTheDesktop()
{
    const bool isX11 = QGuiApplication::platformName() == "xcb"_L1;
    if (!isX11 && !QGuiApplication::platformName().startsWith("wayland"_L1))
        return nullptr; // no desktop at all
    if (isX11 && !DesktopKind::isWayland())
        return std::make_unique<X11GlobalShortcuts>();
    if (const auto bus = MachineBuses::session())
        return std::make_unique<PortalGlobalShortcuts>(*bus);
    return nullptr;
}

} // namespace morvane
