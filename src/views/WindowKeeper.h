#pragma once

#include <QPointer>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// Sees all events of the window that it lies in, before those they are meant for, and where the focus goes.
class WindowKeeper : public QQuickItem {
    Q_OBJECT
    QML_ANONYMOUS

protected:
    using QQuickItem::QQuickItem;

    // The focus has moved; the window is there.
    virtual void watch() = 0;
    void itemChange(ItemChange change, const ItemChangeData &data) override;

private:
    QPointer<QQuickWindow> m_former;
};

} // namespace morvane
