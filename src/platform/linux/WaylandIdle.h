#pragma once

#include "platform/linux/WaylandSession.h"

#include <QObject>

#include <chrono>
#include <memory>
#include <optional>

class QSocketNotifier;
struct ext_idle_notification_v1;
struct ext_idle_notifier_v1;
struct wl_registry;
struct wl_seat;

namespace morvane {

// How long nothing was typed or moved, by a Wayland compositor that tells (ext-idle-notify-v1). It says when
// the first half minute is over and when somebody is back, and nothing between. While a program holds
// idleness off, as a film does, nothing counts as idle. GUI thread; never waits.
class WaylandIdle : public QObject {
    Q_OBJECT
public:
    static constexpr std::chrono::seconds untilTold{30};

    explicit WaylandIdle(WaylandSession::Connection connection, QObject *parent = nullptr);
    ~WaylandIdle() override;

    // The compositor tells; known once it has answered.
    [[nodiscard]] bool isServed() const { return m_notification != nullptr; }
    // 0 until it was told.
    [[nodiscard]] double seconds() const;

Q_SIGNALS:
    void changed();

private:
    struct Hearing; // what the compositor calls

    void read();
    void subscribe();

    WaylandSession::Connection m_connection;
    wl_registry *m_registry = nullptr;
    wl_seat *m_seat = nullptr;
    ext_idle_notifier_v1 *m_notifier = nullptr;
    ext_idle_notification_v1 *m_notification = nullptr;
    std::optional<std::chrono::steady_clock::time_point> m_since;
    std::unique_ptr<QSocketNotifier> m_events;
};

} // namespace morvane
