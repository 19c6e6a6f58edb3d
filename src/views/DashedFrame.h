#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// A rounded outline of dashes. It stands inside the item's edges, and its dashes meet evenly where it begins.
class DashedFrame : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY lookChanged)
    Q_PROPERTY(double radius READ radius WRITE setRadius NOTIFY lookChanged)          // logical pixels
    Q_PROPERTY(double lineWidth READ lineWidth WRITE setLineWidth NOTIFY lookChanged) // logical pixels

public:
    explicit DashedFrame(QQuickItem *parent = nullptr);

    [[nodiscard]] const QColor &color() const { return m_color; }
    void setColor(const QColor &color) { set(m_color, color); }
    [[nodiscard]] double radius() const { return m_radius; }
    void setRadius(double radius) { set(m_radius, radius); }
    [[nodiscard]] double lineWidth() const { return m_lineWidth; }
    void setLineWidth(double width) { set(m_lineWidth, width); }

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void lookChanged();

private:
    template <typename T>
    void set(T &field, const T &value)
    {
        if (field == value)
            return;
        field = value;
        Q_EMIT lookChanged();
        update();
    }

    QColor m_color = Qt::black;
    double m_radius = 0;
    double m_lineWidth = 1;
};

} // namespace morvane
