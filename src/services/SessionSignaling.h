#pragma once

#include <QObject>

namespace morvane {

// What the desktop tells of the person's absence. What a desktop doesn't tell stays false, or zero.
//
// GUI thread. Never blocks: what has to be asked of another process comes with changed().
class SessionSignaling : public QObject {
    Q_OBJECT

public:
    struct Absence {
        bool isScreenLocked = false;
        bool isScreenSaverRunning = false;
        bool isSessionInactive = false; // another person has the screen
        bool areDisplaysAsleep = false;
        bool isSystemAsleep = false; // or about to be
        double idleSeconds = 0;      // since the last input, as of the last answer
        bool tellsIdleTime = true;   // false once it is known that idleSeconds stays 0
    };

    using QObject::QObject;

    virtual void startWatching() = 0;
    virtual void stopWatching() = 0;

    // Asks for the idle time; changed() follows, at once or later.
    virtual void askIdleTime() = 0;

    [[nodiscard]] virtual Absence absence() const = 0; // as last heard

Q_SIGNALS:
    // Whoever hears it has done what it will do when it returns: a machine about to sleep waits for that.
    void changed();
};

} // namespace morvane
