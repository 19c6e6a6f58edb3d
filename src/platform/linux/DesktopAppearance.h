#pragma once

#include "models/DesktopLook.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>

class QDBusMessage;

namespace morvane {

// How the desktop wants windows to look, from the settings portal (org.freedesktop.portal.Settings, group
// org.freedesktop.appearance), now and whenever it changes: color-scheme 1 is dark and anything else light,
// contrast 1 is high, reduced-motion 1 is reduced, and an accent-color with a part outside of 0 to 1 is none.
// Only who owns the portal's name is heard. Without a bus or a portal the look is the plain one. Never
// blocks.
class DesktopAppearance : public QObject {
    Q_OBJECT
public:
    // On the session bus.
    explicit DesktopAppearance(QObject *parent = nullptr);
    explicit DesktopAppearance(QDBusConnection bus, QObject *parent = nullptr);

    [[nodiscard]] const DesktopLook &look() const { return m_look; }

Q_SIGNALS:
    void changed(const morvane::DesktopLook &look);

private Q_SLOTS:
    void settingChanged(const QDBusMessage &signal);

private:
    void ask();
    void take(const DesktopLook &look);

    QDBusConnection m_bus;
    DesktopLook m_look;
    QDBusServiceWatcher m_portal;
};

} // namespace morvane
