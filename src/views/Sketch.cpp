#include "views/Sketch.h"

#include <QPainter>
#include <QSvgRenderer>

namespace morvane {

using namespace Qt::StringLiterals;

Sketch::Sketch(QQuickItem *parent)
    : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
}

void Sketch::setShapes(const QString &shapes)
{
    if (m_shapes == shapes)
        return;
    m_shapes = shapes;
    Q_EMIT shapesChanged();
    update();
}

void Sketch::paint(QPainter *painter)
{
    const QString drawing =
        u"<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 48 48'>%1</svg>"_s.arg(m_shapes);
    QSvgRenderer renderer(drawing.toUtf8());
    if (renderer.isValid())
        renderer.render(painter, boundingRect());
}

} // namespace morvane
