#pragma once

#include <QQuickItem>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// Says one text through assistive technology, without a trace on the screen. Give the item a role of its own
// (Accessible.AlertMessage) and the text as its name; announce() then points the screen reader at it.
class Announcement : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT

public:
    using QQuickItem::QQuickItem;

    Q_INVOKABLE void announce();

Q_SIGNALS:
    void announced();
};

} // namespace morvane
