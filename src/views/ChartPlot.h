#pragma once

#include <QColor>
#include <QFont>
#include <QPointF>
#include <QQuickPaintedItem>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

namespace morvane {

class ChartScale;

// Bars or a line over labels, with a few grid lines. One of the points may be the current one, which stands
// out.
class ChartPlot : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool isLine MEMBER m_isLine NOTIFY contentChanged)
    Q_PROPERTY(bool logScale MEMBER m_logScale NOTIFY contentChanged)
    // Whether the scale is one: not all values have a logarithm.
    Q_PROPERTY(bool isLogarithmic READ isLogarithmic NOTIFY contentChanged)
    Q_PROPERTY(QList<double> values MEMBER m_values NOTIFY contentChanged)
    Q_PROPERTY(QStringList labels MEMBER m_labels NOTIFY contentChanged)
    Q_PROPERTY(int current MEMBER m_current NOTIFY currentChanged) // -1 for none
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY lookChanged)
    Q_PROPERTY(QColor textColor MEMBER m_textColor NOTIFY lookChanged)
    Q_PROPERTY(QColor gridColor MEMBER m_gridColor NOTIFY lookChanged)
    Q_PROPERTY(int fontSize MEMBER m_fontSize NOTIFY lookChanged)

public:
    explicit ChartPlot(QQuickItem *parent = nullptr);

    [[nodiscard]] bool isLogarithmic() const;
    // The point whose column is at that distance from the left; -1 for none.
    Q_INVOKABLE int indexAt(double x) const;
    // The tip of a point.
    Q_INVOKABLE QPointF tipOf(int index) const;
    [[nodiscard]] const QStringList &labels() const { return m_labels; }
    // Where the label of a point belongs, drawn or left out.
    [[nodiscard]] QRectF labelPlace(qsizetype index) const;

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void contentChanged();
    void currentChanged();
    void lookChanged();

private:
    [[nodiscard]] ChartScale scale() const;
    [[nodiscard]] QFont font() const;
    [[nodiscard]] QRectF plotArea(const ChartScale &scale) const;
    [[nodiscard]] QPointF tip(const ChartScale &scale, const QRectF &area, qsizetype index) const;
    void paintGrid(QPainter *painter, const ChartScale &scale, const QRectF &area) const;
    void paintLabels(QPainter *painter, const QRectF &area) const;
    void paintBars(QPainter *painter, const ChartScale &scale, const QRectF &area) const;
    void paintLine(QPainter *painter, const ChartScale &scale, const QRectF &area) const;

    bool m_isLine = false;
    bool m_logScale = false;
    QList<double> m_values;
    QStringList m_labels;
    int m_current = -1;
    QColor m_color;
    QColor m_textColor;
    QColor m_gridColor;
    int m_fontSize = 12;
};

} // namespace morvane
