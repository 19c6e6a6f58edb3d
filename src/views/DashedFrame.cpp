#include "views/DashedFrame.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace morvane {

namespace {

constexpr double dash = 6; // logical pixels, and as much between two
constexpr double gap = 5;

} // namespace

DashedFrame::DashedFrame(QQuickItem *parent)
    : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
}

void DashedFrame::paint(QPainter *painter)
{
    const double inset = m_lineWidth / 2;
    const QRectF frame = boundingRect().adjusted(inset, inset, -inset, -inset);
    if (frame.isEmpty())
        return;
    const double corner = std::clamp(m_radius - inset, 0.0, std::min(frame.width(), frame.height()) / 2);
    QPainterPath path;
    path.addRoundedRect(frame, corner, corner);
    const double dashes = std::max(1.0, std::round(path.length() / (dash + gap)));
    const double stretch = path.length() / (dashes * (dash + gap)) / m_lineWidth; // patterns count in widths
    QPen pen(m_color, m_lineWidth, Qt::CustomDashLine, Qt::FlatCap);
    pen.setDashPattern({dash * stretch, gap * stretch});
    painter->setRenderHint(QPainter::Antialiasing);
    painter->strokePath(path, pen);
}

} // namespace morvane
