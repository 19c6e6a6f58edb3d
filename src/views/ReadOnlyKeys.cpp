#include "views/ReadOnlyKeys.h"

#include <QKeyEvent>

namespace morvane {

namespace {

bool isForReading(const QKeyEvent &key)
{
    return key.matches(QKeySequence::Copy) || key.matches(QKeySequence::SelectAll);
}

} // namespace

void ReadOnlyKeys::componentComplete()
{
    if (m_text)
        m_text->installEventFilter(this);
}

bool ReadOnlyKeys::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::ShortcutOverride || isForReading(*static_cast<QKeyEvent *>(event)))
        return QObject::eventFilter(watched, event);
    event->ignore();
    return true;
}

} // namespace morvane
