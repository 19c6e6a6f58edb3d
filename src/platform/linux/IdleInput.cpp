#include "platform/linux/IdleInput.h"

#include "platform/linux/WaylandIdle.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QSocketNotifier>

#include <xcb/dpms.h>
#include <xcb/screensaver.h>

#include <cstdlib>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

template <typename T>
std::unique_ptr<T, decltype(&std::free)> owned(T *reply)
{
    return {reply, &std::free};
}

const QString monitor = u"org.gnome.Mutter.IdleMonitor"_s;

} // namespace

// A connection of its own, as the window's may not be to an X server at all.
struct IdleInput::XConnection {
    XConnection()
        : connection(xcb_connect(nullptr, nullptr))
    {
        if (xcb_connection_has_error(connection) != 0)
            return;
        root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
        const auto *const saver = xcb_get_extension_data(connection, &xcb_screensaver_id);
        if (!saver || !saver->present)
            return;
        const auto *const power = xcb_get_extension_data(connection, &xcb_dpms_id);
        hasPower = power && power->present;
        notify = saver->first_event + XCB_SCREENSAVER_NOTIFY;
        isUsable = true;
        xcb_screensaver_select_input(connection, root, XCB_SCREENSAVER_EVENT_NOTIFY_MASK);
        xcb_flush(connection);
    }
    ~XConnection() { xcb_disconnect(connection); }
    XConnection(const XConnection &) = delete;
    XConnection &operator=(const XConnection &) = delete;

    xcb_connection_t *const connection;
    xcb_window_t root = 0;
    int notify = 0;
    bool isUsable = false;
    bool hasPower = false;
    std::unique_ptr<QSocketNotifier> notifier;
};

IdleInput::IdleInput(std::optional<QDBusConnection> session, QObject *parent)
    : QObject(parent)
    , m_session(std::move(session))
{
    if (WaylandSession::isNamed())
        openWayland();
    else
        openX();
}

IdleInput::~IdleInput() = default;

bool IdleInput::isServed() const
{
    return m_x || (m_wayland && m_wayland->isServed()) || (m_session && !m_isRefused);
}

void IdleInput::openWayland()
{
    auto connection = WaylandSession::connect();
    if (!connection)
        return;
    m_wayland = std::make_unique<WaylandIdle>(std::move(connection));
    connect(m_wayland.get(), &WaylandIdle::changed, this, [this] {
        m_seconds = m_wayland->seconds();
        Q_EMIT changed();
    });
}

void IdleInput::openX()
{
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        return;
    m_x = std::make_unique<XConnection>();
    if (!m_x->isUsable)
        return m_x.reset();
    m_x->notifier =
        std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_x->connection), QSocketNotifier::Read);
    connect(m_x->notifier.get(), &QSocketNotifier::activated, this, &IdleInput::hearX);
}

void IdleInput::hearX()
{
    if (xcb_connection_has_error(m_x->connection) != 0) {
        m_x->notifier->setEnabled(false);
        return;
    }
    bool heard = false;
    while (const auto event = owned(xcb_poll_for_event(m_x->connection))) {
        if ((event->response_type & 0x7f) != m_x->notify)
            continue;
        const auto *const saver = reinterpret_cast<const xcb_screensaver_notify_event_t *>(event.get());
        m_isBlanked = saver->state == XCB_SCREENSAVER_STATE_ON;
        heard = true;
    }
    if (heard)
        Q_EMIT changed();
}

void IdleInput::ask()
{
    if (m_wayland && m_wayland->isServed()) {
        m_seconds = m_wayland->seconds();
        Q_EMIT changed();
    } else if (m_x)
        askX();
    else if (m_session)
        askCompositor();
}

void IdleInput::askX()
{
    xcb_connection_t *const connection = m_x->connection;
    const auto info = owned(xcb_screensaver_query_info_reply(
        connection, xcb_screensaver_query_info(connection, m_x->root), nullptr));
    if (!info)
        return;
    m_seconds = info->ms_since_user_input / 1000.0;
    m_isBlanked = info->state == XCB_SCREENSAVER_STATE_ON;
    if (m_x->hasPower) {
        const auto power = owned(xcb_dpms_info_reply(connection, xcb_dpms_info(connection), nullptr));
        m_areDisplaysOff = power && power->state != 0 && power->power_level != XCB_DPMS_DPMS_MODE_ON;
    }
    Q_EMIT changed();
}

void IdleInput::askCompositor()
{
    auto question = QDBusMessage::createMethodCall(monitor, u"/org/gnome/Mutter/IdleMonitor/Core"_s, monitor,
                                                   u"GetIdletime"_s);
    question.setAutoStartService(false);
    auto *watcher = new QDBusPendingCallWatcher(m_session->asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<quint64> milliseconds = *watcher;
        m_isRefused = !milliseconds.isValid();
        m_seconds = m_isRefused ? 0 : static_cast<double>(milliseconds.value()) / 1000.0;
        Q_EMIT changed();
    });
}

} // namespace morvane
