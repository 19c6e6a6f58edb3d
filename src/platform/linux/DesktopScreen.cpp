#include "platform/linux/DesktopScreen.h"

#include "platform/linux/DesktopKind.h"
#include "platform/linux/MachineBuses.h"
#include "platform/linux/PortalScreenCapture.h"
#include "platform/linux/X11ScreenCapture.h"

#include <QGuiApplication>

namespace morvane {

using namespace Qt::StringLiterals;

std::unique_ptr<ScreenCapturing> screenOfTheDesktop(Clock &clock, Work &work)
{
    const bool isX11 = QGuiApplication::platformName() == "xcb"_L1;
    if (isX11 && !DesktopKind::isWayland() && !DesktopKind::isSandboxed())
        return std::make_unique<X11ScreenCapture>(work);
    if (!isX11 && !DesktopKind::isWayland())
        return nullptr; // no desktop at all
    if (const auto bus = MachineBuses::session())
        return std::make_unique<PortalScreenCapture>(*bus, clock, work);
    return nullptr;
}

} // namespace morvane
