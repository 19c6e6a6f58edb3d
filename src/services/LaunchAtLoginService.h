#pragma once

#include "services/LoginStarting.h"

#include <QObject>
#include <QString>

namespace morvane {

// Whether the program starts with the session, into the tray. Nothing of it is remembered here: what the
// desktop says holds. GUI thread.
class LaunchAtLoginService final : public QObject {
    Q_OBJECT
public:
    // `desktop` outlives this object.
    explicit LaunchAtLoginService(LoginStarting &desktop, QObject *parent = nullptr);

    [[nodiscard]] bool isEnabled() const { return m_desktop.isOn(); }
    // changed() follows, also when it stays as it was.
    void setEnabled(bool on);
    [[nodiscard]] const QString &message() const { return m_message; } // of the latest refusal; else empty

Q_SIGNALS:
    void changed();

private:
    void tellRefusal(const QString &message);

    LoginStarting &m_desktop;
    QString m_message;
};

} // namespace morvane
