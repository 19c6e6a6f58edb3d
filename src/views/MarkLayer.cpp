#include "views/MarkLayer.h"

#include <QQuickWindow>
#include <QSGRectangleNode>

namespace morvane {

namespace {

constexpr double outlineWidth = 2;

} // namespace

MarkLayer::MarkLayer(QQuickItem &text)
    : QQuickItem(&text)
{
    setObjectName(QStringLiteral("findMarks"));
    setFlag(ItemHasContents);
    setZ(-1);
}

void MarkLayer::setMarks(const Marks &marks)
{
    if (m_marks == marks)
        return;
    m_marks = marks;
    update();
}

QSGNode *MarkLayer::updatePaintNode(QSGNode *node, UpdatePaintNodeData *)
{
    delete node;
    auto *root = new QSGNode;
    const auto add = [&](const QRectF &rect, const QColor &color) {
        QSGRectangleNode *ground = window()->createRectangleNode();
        ground->setRect(rect);
        ground->setColor(color);
        root->appendChildNode(ground);
    };
    for (const QRectF &rect : m_marks.finds)
        add(rect, m_marks.color);
    for (const QRectF &rect : m_marks.current)
        add(rect.adjusted(-outlineWidth, -outlineWidth, outlineWidth, outlineWidth), m_marks.outline);
    for (const QRectF &rect : m_marks.current)
        add(rect, m_marks.currentColor);
    return root;
}

} // namespace morvane
