#pragma once

#include "view_models/AppRequest.h"
#include "view_models/TrayIcon.h"

#include <QObject>

#include <memory>

namespace morvane {

class Alarm;
class Clock;
struct Presentation;

// What the tray icon shows and does, while the settings want one. GUI thread.
class Tray : public QObject {
    Q_OBJECT
public:
    // How long a panel may be away, at the start of a session or while it is started anew, before a window
    // that only it leads to has to be found in another way.
    static constexpr int patience = 10; // seconds

    // All of it outlives this object.
    Tray(const Presentation &presentation, TrayIcon &icon, Clock &clock);
    ~Tray() override;

Q_SIGNALS:
    void asked(const morvane::AppRequest &request);
    void quitAsked();
    void lost(); // no panel draws the icon, and hasn't for a while

private:
    void update();
    void followPanel();
    void carryOut(TrayCommand command);
    [[nodiscard]] TrayFace face() const;

    const Presentation &m_presentation;
    TrayIcon &m_icon;
    Clock &m_clock;
    std::unique_ptr<Alarm> m_absence;
};

} // namespace morvane
