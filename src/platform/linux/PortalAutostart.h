#pragma once

#include "services/LoginStarting.h"

#include <QDBusConnection>
#include <QPointer>
#include <QString>

#include <memory>
#include <optional>

namespace morvane {

class PortalCall;

// The start with the session by the desktop's portal (org.freedesktop.portal.Background, version 1 and
// later), which is how a sandboxed program has it; it may ask the person. The portal doesn't tell how it
// stands, so that the latest answer is kept in a file. GUI thread.
class PortalAutostart final : public LoginStarting {
    Q_OBJECT
public:
    // `folder` is the program's own folder of state.
    PortalAutostart(QDBusConnection bus, const QString &folder, QObject *parent = nullptr);

    // While the portal is asked, what it is asked for.
    [[nodiscard]] bool isOn() override;
    [[nodiscard]] bool set(bool on) override;

private:
    void keep(bool isOn);

    QDBusConnection m_bus;
    const QString m_path; // a file there: it was granted
    QPointer<PortalCall> m_call;
    std::optional<bool> m_asked; // until it has answered
};

// The way for this desktop. `program` is the absolute path of what is started.
[[nodiscard]] std::unique_ptr<LoginStarting>
loginOfTheDesktop(const QString &configFolder, const QString &stateFolder, const QString &program);

} // namespace morvane
