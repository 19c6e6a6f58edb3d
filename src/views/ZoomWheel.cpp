#include "views/ZoomWheel.h"

#include <QWheelEvent>

namespace morvane {

bool ZoomWheel::eventFilter(QObject *, QEvent *event)
{
    if (event->type() != QEvent::Wheel)
        return false;
    auto &wheel = *static_cast<QWheelEvent *>(event);
    if (wheel.modifiers() != Qt::ControlModifier) {
        m_turned = 0;
        return false;
    }
    m_turned += wheel.angleDelta().y();
    const int steps = m_turned / QWheelEvent::DefaultDeltasPerStep;
    m_turned -= steps * QWheelEvent::DefaultDeltasPerStep;
    if (steps != 0)
        Q_EMIT turned(steps);
    wheel.accept();
    return true;
}

} // namespace morvane
