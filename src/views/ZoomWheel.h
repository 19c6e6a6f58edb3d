#pragma once

#include "views/WindowKeeper.h"

namespace morvane {

// Takes each turn of the wheel with Ctrl from the window's lists and texts, which would scroll.
class ZoomWheel : public morvane::WindowKeeper {
    Q_OBJECT
    QML_ELEMENT

public:
    using WindowKeeper::WindowKeeper;

Q_SIGNALS:
    void turned(int steps); // up is positive

protected:
    void watch() override {}
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    int m_turned = 0; // since the last step, in eighths of a degree; a touchpad sends a few at a time
};

} // namespace morvane
