#pragma once

#include "services/LinkOpening.h"

#include <QDBusConnection>

#include <chrono>
#include <optional>

namespace morvane {

class Clock;

// Opens addresses by the desktop's portal (org.freedesktop.portal.OpenURI), and where there is none by
// xdg-open, whose exit tells the truth. GUI thread.
class DesktopLinks final : public LinkOpening {
public:
    // After this time what xdg-open started runs on, and is what was wanted: where it knows no desktop it
    // stays until the browser is closed.
    static constexpr std::chrono::seconds patience{10};

    // `bus` is the session's; none where the session has none. `clock` outlives this object.
    DesktopLinks(std::optional<QDBusConnection> bus, Clock &clock);

    QCoro::Task<Outcome> open(QUrl address, std::stop_token stop) override;

private:
    std::optional<QDBusConnection> m_bus;
    Clock &m_clock;
};

} // namespace morvane
