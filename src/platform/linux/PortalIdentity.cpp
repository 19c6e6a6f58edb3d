#include "platform/linux/PortalIdentity.h"

#include "platform/linux/DesktopKind.h"
#include "platform/linux/ProcessPrivacy.h"
#include "utils/text/Product.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

#include <memory>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The process can be looked at meanwhile, so not for as long as a call may take.
constexpr int patienceMilliseconds = 3000;

} // namespace

void PortalIdentity::tell(std::optional<QDBusConnection> bus)
{
    if (!bus || !bus->isConnected() || DesktopKind::isSandboxed())
        return;
    auto call = QDBusMessage::createMethodCall(u"org.freedesktop.portal.Desktop"_s,
                                               u"/org/freedesktop/portal/desktop"_s,
                                               u"org.freedesktop.host.portal.Registry"_s, u"Register"_s);
    call.setArguments({QString(Product::desktopId), QVariantMap()});
    auto visible = std::make_shared<ProcessPrivacy::Pause>();
    auto *watcher =
        new QDBusPendingCallWatcher(bus->asyncCall(call, patienceMilliseconds), QCoreApplication::instance());
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, visible]() mutable {
        visible.reset();
        watcher->deleteLater();
    });
}

} // namespace morvane
