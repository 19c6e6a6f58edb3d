#pragma once

#include "view_models/find/FindTerms.h"
#include "views/MarkLayer.h"

#include <QList>
#include <QPointer>
#include <QQuickItem>
#include <QRectF>
#include <QTextDocument>

#include <utility>

namespace morvane {

// The finds in one drawn text, a TextEdit, a Text or the labels of a ChartPlot, and where they are drawn.
class FoundText {
public:
    explicit FoundText(QQuickItem &item);
    ~FoundText(); // takes its marks off
    FoundText(const FoundText &) = delete;
    FoundText &operator=(const FoundText &) = delete;

    // Looks through the text, if it or the terms have changed.
    void find(const FindTerms &terms, int serialOfTerms);
    [[nodiscard]] qsizetype count() const { return m_finds.size(); }

    // The lines that a find goes over, in the coordinates of the item.
    [[nodiscard]] QList<QRectF> rects(qsizetype find) const;
    // The first and the one behind the last find that touch what lies between these heights of the item.
    [[nodiscard]] std::pair<qsizetype, qsizetype> between(double top, double bottom) const;

    [[nodiscard]] QQuickItem *item() const { return m_item; } // null once it is gone
    [[nodiscard]] MarkLayer &layer();
    [[nodiscard]] bool hasLayer() const { return m_layer; }

private:
    [[nodiscard]] QTextDocument *document() const;
    [[nodiscard]] QRectF blockRect(qsizetype find) const;
    [[nodiscard]] QPointF padding() const;

    QPointer<QQuickItem> m_item;
    QPointer<MarkLayer> m_layer;
    [[nodiscard]] QString plainText() const;

    QList<FindTerms::Find> m_finds; // places in the document
    QString m_text;                 // of a Text or the labels, a line each,, when it was looked through
    int m_revision = -1;            // of a TextEdit's document
    int m_serial = -1;
};

} // namespace morvane
