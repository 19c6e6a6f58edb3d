#pragma once

#include <QQuickItem>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// Says one text through assistive technology, without a trace on the screen. Give the item a role of its own
// (Accessible.Notification) and the text as its name; announce() then has the screen reader say it.
class Announcement : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT

public:
    explicit Announcement(QQuickItem *parent = nullptr);

    Q_INVOKABLE void announce();

Q_SIGNALS:
    void announced();
};

} // namespace morvane
