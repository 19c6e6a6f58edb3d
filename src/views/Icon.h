#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// A drawing of ours from icons/, in one colour. It is painted from its vectors at the size and scale of the
// moment, so it is sharp everywhere. An unknown name draws nothing.
class Icon : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)

public:
    explicit Icon(QQuickItem *parent = nullptr);

    [[nodiscard]] const QString &name() const { return m_name; }
    void setName(const QString &name);
    [[nodiscard]] const QColor &color() const { return m_color; }
    void setColor(const QColor &color);

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void nameChanged();
    void colorChanged();

private:
    QString m_name;
    QColor m_color = Qt::black;
};

} // namespace morvane
