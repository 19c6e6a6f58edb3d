#include "views/ChartPlot.h"

#include "views/ChartScale.h"

#include <QFontMetricsF>
#include <QLocale>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr double gap = 8;
constexpr double widestBar = 48;
constexpr double leastBar = 2; // what isn't nothing shows
constexpr double dotRadius = 3.5;
constexpr double fadedOpacity = 0.45; // of the other bars while one is current

// A tick in few characters: 1,500, 60K, 1.2M, 1e+15.
QString shortNumber(double value)
{
    const QLocale locale = QLocale::c();
    const double size = std::abs(value);
    const auto scaled = [&](double unit, QChar suffix) {
        return locale.toString(value / unit, 'g', 4) + suffix;
    };
    if (size >= 1e15 || (size > 0 && size < 1e-4))
        return locale.toString(value, 'g', 2);
    if (size >= 1e12)
        return scaled(1e12, u'T');
    if (size >= 1e9)
        return scaled(1e9, u'B');
    if (size >= 1e6)
        return scaled(1e6, u'M');
    if (size >= 1e4)
        return scaled(1e3, u'K');
    return locale.toString(value, 'g', 6);
}

} // namespace

ChartPlot::ChartPlot(QQuickItem *parent)
    : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
    for (const auto changed :
         {&ChartPlot::contentChanged, &ChartPlot::currentChanged, &ChartPlot::lookChanged})
        connect(this, changed, this, [this] { update(); });
}

ChartScale ChartPlot::scale() const
{
    using Spacing = ChartScale::Spacing;
    return {m_values, m_logScale ? Spacing::logarithmic : Spacing::linear, !m_isLine};
}

bool ChartPlot::isLogarithmic() const
{
    return scale().isLogarithmic();
}

QFont ChartPlot::font() const
{
    QFont font;
    font.setPixelSize(m_fontSize);
    return font;
}

QRectF ChartPlot::plotArea(const ChartScale &scale) const
{
    const QFontMetricsF metrics(font());
    double widest = 0;
    for (const double tick : scale.ticks())
        widest = std::max(widest, metrics.horizontalAdvance(shortNumber(tick)));
    const double left = widest + gap;
    const double bottom = height() - metrics.height() - gap;
    return {left, metrics.height() / 2, std::max(0.0, width() - left),
            std::max(0.0, bottom - metrics.height() / 2)};
}

QPointF ChartPlot::tip(const ChartScale &scale, const QRectF &area, qsizetype index) const
{
    const double column = area.width() / static_cast<double>(m_values.size());
    return {area.left() + column * (static_cast<double>(index) + 0.5),
            area.bottom() - area.height() * scale.place(m_values[index])};
}

int ChartPlot::indexAt(double x) const
{
    const QRectF area = plotArea(scale());
    if (m_values.isEmpty() || area.width() <= 0 || x < area.left() || x >= area.right())
        return -1;
    const double column = area.width() / static_cast<double>(m_values.size());
    return std::clamp(static_cast<int>((x - area.left()) / column), 0, static_cast<int>(m_values.size()) - 1);
}

QPointF ChartPlot::tipOf(int index) const
{
    if (index < 0 || index >= m_values.size())
        return {};
    const ChartScale ruler = scale();
    return tip(ruler, plotArea(ruler), index);
}

QRectF ChartPlot::labelPlace(qsizetype index) const
{
    const QRectF area = plotArea(scale());
    const double column = area.width() / static_cast<double>(m_labels.size());
    return {area.left() + column * static_cast<double>(index), area.bottom(), column,
            height() - area.bottom()};
}

void ChartPlot::paint(QPainter *painter)
{
    if (m_values.isEmpty() || m_labels.size() != m_values.size())
        return;
    const ChartScale ruler = scale();
    const QRectF area = plotArea(ruler);
    painter->setFont(font());
    paintGrid(painter, ruler, area);
    paintLabels(painter, area);
    if (m_isLine)
        paintLine(painter, ruler, area);
    else
        paintBars(painter, ruler, area);
}

void ChartPlot::paintGrid(QPainter *painter, const ChartScale &scale, const QRectF &area) const
{
    const double lineHeight = QFontMetricsF(font()).height();
    for (const double tick : scale.ticks()) {
        const double y = area.bottom() - area.height() * scale.place(tick);
        painter->setPen(QPen(m_gridColor, 1));
        painter->drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
        painter->setPen(m_textColor);
        painter->drawText(QRectF(0, y - lineHeight / 2, area.left() - gap, lineHeight),
                          Qt::AlignRight | Qt::AlignVCenter, shortNumber(tick));
    }
}

// Labels that don't fit beside each other are left out evenly; the last one that fits stays whole.
void ChartPlot::paintLabels(QPainter *painter, const QRectF &area) const
{
    const QFontMetricsF metrics(font());
    const double column = area.width() / static_cast<double>(m_labels.size());
    double widest = 0;
    for (const QString &label : m_labels)
        widest = std::max(widest, metrics.horizontalAdvance(label.left(24)));
    const double room = std::max(column, std::min(widest + gap, 4 * column));
    const auto step = static_cast<qsizetype>(std::max(1.0, std::ceil(room / std::max(column, 1.0))));
    painter->setPen(m_textColor);
    for (qsizetype i = 0; i < m_labels.size(); i += step) {
        const double width = column * static_cast<double>(step) - gap / 2;
        const double middle = area.left() + column * (static_cast<double>(i) + 0.5);
        const double left = std::clamp(middle - width / 2, 0.0, std::max(0.0, area.right() - width));
        const QString words = metrics.elidedText(m_labels[i].left(64), Qt::ElideRight, width);
        painter->drawText(QRectF(left, area.bottom() + gap, width, metrics.height()), Qt::AlignCenter, words);
    }
}

void ChartPlot::paintBars(QPainter *painter, const ChartScale &scale, const QRectF &area) const
{
    const double column = area.width() / static_cast<double>(m_values.size());
    const double width = std::min(widestBar, column * 0.7);
    const double ground = area.bottom() - (scale.isLogarithmic() ? 0 : area.height() * scale.place(0));
    painter->setPen(Qt::NoPen);
    for (qsizetype i = 0; i < m_values.size(); ++i) {
        QPointF top = tip(scale, area, i);
        if (m_values[i] != 0 && std::abs(top.y() - ground) < leastBar)
            top.setY(ground + (m_values[i] < 0 ? leastBar : -leastBar));
        painter->setOpacity(m_current < 0 || m_current == i ? 1 : fadedOpacity);
        painter->setBrush(m_color);
        const QRectF bar =
            QRectF(QPointF(top.x() - width / 2, top.y()), QPointF(top.x() + width / 2, ground));
        painter->drawRoundedRect(bar.normalized(), 2, 2);
    }
    painter->setOpacity(1);
}

void ChartPlot::paintLine(QPainter *painter, const ChartScale &scale, const QRectF &area) const
{
    QPolygonF points;
    for (qsizetype i = 0; i < m_values.size(); ++i)
        points.append(tip(scale, area, i));
    painter->setPen(QPen(m_color, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->drawPolyline(points);
    painter->setPen(Qt::NoPen);
    painter->setBrush(m_color);
    for (qsizetype i = 0; i < points.size(); ++i) {
        const double radius = m_current == i ? dotRadius + 2 : dotRadius;
        painter->drawEllipse(points[i], radius, radius);
    }
}

} // namespace morvane
