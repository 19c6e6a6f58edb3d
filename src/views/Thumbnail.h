#pragma once

#include "view_models/chat/AttachmentDesk.h"

#include <QPointer>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// The small picture of what is attached, with round corners. It is drawn from pixels in memory, neither
// loaded from anywhere nor kept in a cache.
class Thumbnail : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(morvane::AttachmentDesk *desk READ desk WRITE setDesk NOTIFY deskChanged)
    Q_PROPERTY(double radius MEMBER m_radius NOTIFY radiusChanged)

public:
    explicit Thumbnail(QQuickItem *parent = nullptr);

    [[nodiscard]] AttachmentDesk *desk() const { return m_desk; }
    void setDesk(AttachmentDesk *desk);

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void deskChanged();
    void radiusChanged();

private:
    void look();

    QPointer<AttachmentDesk> m_desk;
    QImage m_image;
    double m_radius = 0;
};

} // namespace morvane
