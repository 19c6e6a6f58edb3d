#pragma once

#include <QQuickPaintedItem>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// A drawing whose shapes are elements of SVG, on a square of 48 units. It is painted from its vectors at the
// size and scale of the moment, so its edges are smooth on every renderer, and holds one texture of its own
// size: the samples that shapes of the scene graph need on OpenGL are paid for by every pixel of the window.
// Shapes that can't be read draw nothing.
class Sketch : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString shapes READ shapes WRITE setShapes NOTIFY shapesChanged)

public:
    explicit Sketch(QQuickItem *parent = nullptr);

    [[nodiscard]] const QString &shapes() const { return m_shapes; }
    void setShapes(const QString &shapes);

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void shapesChanged();

private:
    QString m_shapes;
};

} // namespace morvane
