#include "platform/linux/DesktopKind.h"

#include "platform/linux/WaylandSession.h"

#include <QFileInfo>
#include <QGuiApplication>

namespace morvane {

using namespace Qt::StringLiterals;

bool DesktopKind::isWayland()
{
    return QGuiApplication::platformName().startsWith("wayland"_L1) || WaylandSession::isNamed();
}

bool DesktopKind::isSandboxed()
{
    return QFileInfo::exists(u"/.flatpak-info"_s) || qEnvironmentVariableIsSet("SNAP");
}

} // namespace morvane
