#include "views/Announcement.h"

#include <QAccessible>

namespace morvane {

void Announcement::announce()
{
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
    Q_EMIT announced();
}

} // namespace morvane
