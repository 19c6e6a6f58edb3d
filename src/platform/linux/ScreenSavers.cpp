#include "platform/linux/ScreenSavers.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString portalService = u"org.freedesktop.portal.Desktop"_s;
const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString inhibit = u"org.freedesktop.portal.Inhibit"_s;
const QString token = u"morvane_lock"_s;
constexpr uint queryEnd = 2; // the session ends once everybody has answered

} // namespace

// Their signals alone are the same; whoever sends one on this bus could at most lock the window.
ScreenSavers::ScreenSavers(QDBusConnection bus, Portal portal, QObject *parent)
    : QObject(parent)
    , m_bus(std::move(bus))
{
    for (const auto &interface :
         {u"org.freedesktop.ScreenSaver"_s, u"org.gnome.ScreenSaver"_s, u"org.cinnamon.ScreenSaver"_s,
          u"org.mate.ScreenSaver"_s, u"org.xfce.ScreenSaver"_s})
        m_bus.connect({}, {}, interface, u"ActiveChanged"_s, this, SLOT(activeChanged(bool)));
    if (portal == Portal::asked)
        watchPortal();
}

ScreenSavers::~ScreenSavers()
{
    if (!m_portalSession.isEmpty())
        tellPortal(m_portalSession, u"org.freedesktop.portal.Session"_s, u"Close"_s, {});
}

void ScreenSavers::activeChanged(bool active)
{
    m_isActive = active;
    Q_EMIT changed();
}

// The portal's session has a path that both sides know before it is made.
void ScreenSavers::watchPortal()
{
    const QString sender = m_bus.baseService().mid(1).replace(u'.', u'_');
    m_portalSession = portalPath + u"/session/"_s + sender + u'/' + token;
    m_bus.connect({}, portalPath, inhibit, u"StateChanged"_s, this, SLOT(stateChanged(QDBusMessage)));
    const QVariantMap options{{u"handle_token"_s, token}, {u"session_handle_token"_s, token}};
    tellPortal(portalPath, inhibit, u"CreateMonitor"_s, {QString(), options});
}

// As a message: a slot that takes an object path is found only once somebody has named that type.
void ScreenSavers::stateChanged(const QDBusMessage &signal)
{
    const auto session = signal.arguments().value(0).value<QDBusObjectPath>();
    if (session.path() != m_portalSession)
        return;
    const auto state = qdbus_cast<QVariantMap>(signal.arguments().value(1));
    m_isActiveOfPortal = state.value(u"screensaver-active"_s).toBool();
    if (state.value(u"session-state"_s).toUInt() == queryEnd)
        tellPortal(portalPath, inhibit, u"QueryEndResponse"_s, {QVariant::fromValue(session)});
    Q_EMIT changed();
}

void ScreenSavers::tellPortal(const QString &path, const QString &interface, const QString &method,
                              const QVariantList &arguments)
{
    auto message = QDBusMessage::createMethodCall(portalService, path, interface, method);
    message.setArguments(arguments);
    message.setAutoStartService(false); // where no portal runs, nothing waits for the session's end either
    m_bus.send(message);
}

} // namespace morvane
