#include "views/Icon.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qreal ordinarySize = 20;

// Our drawings name their one colour "currentColor".
QByteArray drawingInColor(const QString &name, const QColor &color)
{
    QFile file(u":/qt/qml/Morvane/icons/"_s + name + u".svg"_s);
    if (name.isEmpty() || !file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll().replace("currentColor", color.name().toLatin1());
}

} // namespace

Icon::Icon(QQuickItem *parent)
    : QQuickPaintedItem(parent)
{
    setImplicitSize(ordinarySize, ordinarySize);
    setAntialiasing(true);
}

void Icon::setName(const QString &name)
{
    if (m_name == name)
        return;
    m_name = name;
    Q_EMIT nameChanged();
    update();
}

void Icon::setColor(const QColor &color)
{
    if (m_color == color)
        return;
    m_color = color;
    Q_EMIT colorChanged();
    update();
}

void Icon::paint(QPainter *painter)
{
    QSvgRenderer renderer(drawingInColor(m_name, m_color));
    if (!renderer.isValid())
        return;
    painter->setOpacity(m_color.alphaF());
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    renderer.render(painter, boundingRect());
}

} // namespace morvane
