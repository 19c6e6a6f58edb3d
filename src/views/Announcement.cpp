#include "views/Announcement.h"

#include <QAccessible>

void Announcement::announce()
{
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
    Q_EMIT announced();
}
