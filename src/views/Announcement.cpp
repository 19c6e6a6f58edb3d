#include "views/Announcement.h"

#include <QAccessible>

namespace morvane {

// Nobody comes across it in the tree, and it speaks with announce() alone, not as what holds it appears.
Announcement::Announcement(QQuickItem *parent)
    : QQuickItem(parent)
{
    setVisible(false);
}

// Screen readers speak of a notification when it appears; an alert, or a name that changes beside the focus,
// they pass over.
void Announcement::announce()
{
    QAccessibleEvent event(this, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&event);
    Q_EMIT announced();
}

} // namespace morvane
