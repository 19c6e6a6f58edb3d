#include "views/Thumbnail.h"

#include <QPainter>
#include <QPainterPath>

namespace morvane {

Thumbnail::Thumbnail(QQuickItem *parent)
    : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
}

void Thumbnail::setDesk(AttachmentDesk *desk)
{
    if (m_desk == desk)
        return;
    if (m_desk)
        m_desk->disconnect(this);
    m_desk = desk;
    if (m_desk)
        connect(m_desk, &AttachmentDesk::changed, this, &Thumbnail::look);
    look();
    Q_EMIT deskChanged();
}

void Thumbnail::look()
{
    m_image = m_desk ? m_desk->thumbnail() : QImage();
    update();
}

// Filled and not clipped: the edge of a clip is jagged.
void Thumbnail::paint(QPainter *painter)
{
    if (m_image.isNull() || width() <= 0 || height() <= 0)
        return;
    QPainterPath frame;
    frame.addRoundedRect(boundingRect(), m_radius, m_radius);
    QBrush pixels(m_image);
    pixels.setTransform(QTransform::fromScale(width() / m_image.width(), height() / m_image.height()));
    painter->setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter->fillPath(frame, pixels);
}

} // namespace morvane
