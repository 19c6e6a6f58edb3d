#include "platform/linux/WaylandIdle.h"

#include <QSocketNotifier>

#include <cstring>
#include <ext-idle-notify-v1.h>
#include <wayland-client-protocol.h>

namespace morvane {

using namespace std::chrono_literals;

struct WaylandIdle::Hearing {
    static void see(void *self, wl_registry *registry, std::uint32_t name, const char *interface,
                    std::uint32_t)
    {
        auto *const idle = static_cast<WaylandIdle *>(self);
        const auto bind = [&](const wl_interface &wanted) {
            return wl_registry_bind(registry, name, &wanted, 1);
        };
        if (!idle->m_seat && std::strcmp(interface, wl_seat_interface.name) == 0)
            idle->m_seat = static_cast<wl_seat *>(bind(wl_seat_interface));
        else if (!idle->m_notifier && std::strcmp(interface, ext_idle_notifier_v1_interface.name) == 0)
            idle->m_notifier = static_cast<ext_idle_notifier_v1 *>(bind(ext_idle_notifier_v1_interface));
        idle->subscribe();
    }
    static void lose(void *, wl_registry *, std::uint32_t) {}
    static void idled(void *self, ext_idle_notification_v1 *)
    {
        auto *const idle = static_cast<WaylandIdle *>(self);
        idle->m_since = std::chrono::steady_clock::now() - untilTold;
        Q_EMIT idle->changed();
    }
    static void resumed(void *self, ext_idle_notification_v1 *)
    {
        auto *const idle = static_cast<WaylandIdle *>(self);
        idle->m_since.reset();
        Q_EMIT idle->changed();
    }

    static constexpr wl_registry_listener globals{&see, &lose};
    static constexpr ext_idle_notification_v1_listener input{&idled, &resumed};
};

WaylandIdle::WaylandIdle(WaylandSession::Connection connection, QObject *parent)
    : QObject(parent)
    , m_connection(std::move(connection))
    , m_registry(wl_display_get_registry(m_connection.get()))
    , m_events(
          std::make_unique<QSocketNotifier>(wl_display_get_fd(m_connection.get()), QSocketNotifier::Read))
{
    wl_registry_add_listener(m_registry, &Hearing::globals, this);
    connect(m_events.get(), &QSocketNotifier::activated, this, &WaylandIdle::read);
    wl_display_flush(m_connection.get());
}

WaylandIdle::~WaylandIdle()
{
    if (m_notification)
        ext_idle_notification_v1_destroy(m_notification);
    if (m_notifier)
        ext_idle_notifier_v1_destroy(m_notifier);
    if (m_seat)
        wl_seat_destroy(m_seat);
    wl_registry_destroy(m_registry);
}

double WaylandIdle::seconds() const
{
    if (!m_since)
        return 0;
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - *m_since).count();
}

void WaylandIdle::subscribe()
{
    if (m_notification || !m_seat || !m_notifier)
        return;
    m_notification =
        ext_idle_notifier_v1_get_idle_notification(m_notifier, std::uint32_t(untilTold / 1ms), m_seat);
    ext_idle_notification_v1_add_listener(m_notification, &Hearing::input, this);
}

// A compositor that is gone tells nothing more, and what it told last isn't true for long.
void WaylandIdle::read()
{
    wl_display *const display = m_connection.get();
    while (wl_display_prepare_read(display) != 0) {
        if (wl_display_dispatch_pending(display) < 0)
            break;
    }
    if (wl_display_get_error(display) != 0 || wl_display_read_events(display) < 0) {
        m_events->setEnabled(false);
        m_since.reset();
        return;
    }
    wl_display_dispatch_pending(display);
    wl_display_flush(display);
}

} // namespace morvane
