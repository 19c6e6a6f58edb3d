#pragma once

#include <QObject>

namespace morvane {

// What starts programs with the person's session. Others may change it at any time. GUI thread.
class LoginStarting : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    // As it stands now, which is asked of the desktop.
    [[nodiscard]] virtual bool isOn() = 0;
    // False when the desktop refused. One that has to ask first takes it, and tells later.
    [[nodiscard]] virtual bool set(bool on) = 0;

Q_SIGNALS:
    void changed();
    void refused(bool on); // after it was asked; it stands as before
};

} // namespace morvane
