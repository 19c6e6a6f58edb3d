#pragma once

#include "services/SessionSignaling.h"

#include <QDBusConnection>

#include <memory>
#include <optional>

namespace morvane {

class Displays;
class IdleInput;
class LoginSession;
class ScreenSavers;

// All that this desktop tells of the person's absence; the README beside says which desktop tells what.
class DesktopSession final : public SessionSignaling {
    Q_OBJECT
public:
    struct Buses {
        std::optional<QDBusConnection> session;
        std::optional<QDBusConnection> system;
    };

    explicit DesktopSession(QObject *parent = nullptr);
    explicit DesktopSession(Buses buses, QObject *parent = nullptr);
    ~DesktopSession() override;

    void startWatching() override;
    void stopWatching() override;
    void askIdleTime() override;
    [[nodiscard]] Absence absence() const override;

private:
    struct Sources {
        std::unique_ptr<LoginSession> login;  // null without the system's bus
        std::unique_ptr<ScreenSavers> savers; // null without the session's bus
        std::unique_ptr<Displays> displays;
        std::unique_ptr<IdleInput> input;
    };

    std::optional<Buses> m_buses;       // none: those of this machine, once they are needed
    std::unique_ptr<Sources> m_sources; // while watching
};

} // namespace morvane
