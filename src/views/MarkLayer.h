#pragma once

#include <QColor>
#include <QList>
#include <QQuickItem>
#include <QRectF>

namespace morvane {

// Grounds of found words, drawn below the words of the text that it is a child of.
class MarkLayer : public QQuickItem {
    Q_OBJECT
public:
    struct Marks {
        QList<QRectF> finds;
        QList<QRectF> current; // the parts of the current find, which may go over lines
        QColor color;
        QColor currentColor;
        QColor outline; // of the current find
        bool operator==(const Marks &) const = default;
    };

    explicit MarkLayer(QQuickItem &text);

    void setMarks(const Marks &marks);
    [[nodiscard]] const Marks &marks() const { return m_marks; }

protected:
    QSGNode *updatePaintNode(QSGNode *node, UpdatePaintNodeData *data) override;

private:
    Marks m_marks;
};

} // namespace morvane
