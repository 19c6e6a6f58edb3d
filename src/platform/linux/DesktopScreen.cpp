#include "platform/linux/DesktopScreen.h"

#include "platform/linux/DesktopNotifications.h"
#include "platform/linux/PortalScreenCapture.h"
#include "platform/linux/WaylandSession.h"
#include "platform/linux/X11ScreenCapture.h"

#include <QFileInfo>
#include <QGuiApplication>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

bool isSandboxed()
{
    return QFileInfo::exists(u"/.flatpak-info"_s) || qEnvironmentVariableIsSet("SNAP");
}

bool isWayland()
{
    return QGuiApplication::platformName().startsWith("wayland"_L1) || WaylandSession::isNamed();
}

} // namespace

std::unique_ptr<ScreenCapturing> screenOfTheDesktop(Clock &clock, Work &work)
{
    const bool isX11 = QGuiApplication::platformName() == "xcb"_L1;
    if (isX11 && !isWayland() && !isSandboxed())
        return std::make_unique<X11ScreenCapture>(work);
    if (!isX11 && !isWayland())
        return nullptr; // no desktop at all
    if (const auto bus = DesktopNotifications::sessionBus())
        return std::make_unique<PortalScreenCapture>(*bus, clock, work);
    return nullptr;
}

} // namespace morvane
