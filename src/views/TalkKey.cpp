#include "views/TalkKey.h"

#include <QKeyEvent>

#include <utility>

namespace morvane {

void TalkKey::hold()
{
    m_cameUp.stop();
    if (!std::exchange(m_held, m_latest))
        Q_EMIT held();
}

bool TalkKey::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::ShortcutOverride: { // comes before the shortcuts
        auto &key = *static_cast<QKeyEvent *>(event);
        if (!key.isAutoRepeat())
            m_latest = {key.key(), key.nativeScanCode()};
        if (isEscape(key)) {
            key.accept(); // no shortcut's
            return true;
        }
        break;
    }
    case QEvent::KeyPress:
        if (isEscape(*static_cast<QKeyEvent *>(event))) {
            Q_EMIT escaped();
            return true;
        }
        break;
    case QEvent::KeyRelease:
        if (endsHold(*static_cast<QKeyEvent *>(event)))
            m_cameUp.start(repeatPause, this);
        break;
    case QEvent::FocusOut:
    case QEvent::Hide:
        release();
        break;
    default:
        break;
    }
    return WindowKeeper::eventFilter(watched, event);
}

void TalkKey::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == m_cameUp.timerId())
        release();
}

void TalkKey::release()
{
    m_cameUp.stop();
    if (std::exchange(m_held, std::nullopt))
        Q_EMIT letGo();
}

bool TalkKey::endsHold(const QKeyEvent &event) const
{
    if (!m_held || event.isAutoRepeat())
        return false;
    const int key = event.key();
    const bool isModifier =
        key == Qt::Key_Alt || key == Qt::Key_Control || key == Qt::Key_Shift || key == Qt::Key_Meta;
    return isModifier || key == m_held->key ||
           (m_held->place != 0 && event.nativeScanCode() == m_held->place);
}

bool TalkKey::isEscape(const QKeyEvent &event) const
{
    return m_takesEscape && event.key() == Qt::Key_Escape && !event.isAutoRepeat();
}

} // namespace morvane
