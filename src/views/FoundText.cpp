#include "views/FoundText.h"

#include "views/ChartPlot.h"

#include <QAbstractTextDocumentLayout>
#include <QFont>
#include <QQuickTextDocument>
#include <QTextBlock>
#include <QTextLayout>

#include <algorithm>
#include <ranges>

namespace morvane {

namespace {

// A Text lays out its words as this does; it can't be asked where they stand.
void layOut(QTextLayout &layout, const QQuickItem &item, double width)
{
    QTextOption option;
    option.setWrapMode(static_cast<QTextOption::WrapMode>(item.property("wrapMode").toInt()));
    option.setAlignment(static_cast<Qt::Alignment>(item.property("horizontalAlignment").toInt()));
    layout.setTextOption(option);
    layout.beginLayout();
    double y = 0;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        line.setPosition({0, y});
        y += line.height();
    }
    layout.endLayout();
}

QList<QRectF> rectsIn(const QTextLayout &layout, QPointF origin, int start, int length)
{
    QList<QRectF> rects;
    for (int i = 0; i < layout.lineCount(); ++i) {
        const QTextLine line = layout.lineAt(i);
        const int from = std::max(start, line.textStart());
        const int to = std::min(start + length, line.textStart() + line.textLength());
        if (from >= to)
            continue;
        const double left = line.cursorToX(from);
        const double right = line.cursorToX(to);
        rects.append(QRectF(origin + QPointF(std::min(left, right), line.y()),
                            QSizeF(std::abs(right - left), line.height())));
    }
    return rects;
}

} // namespace

FoundText::FoundText(QQuickItem &item)
    : m_item(&item)
{}

FoundText::~FoundText()
{
    delete m_layer;
}

MarkLayer &FoundText::layer()
{
    if (!m_layer)
        m_layer = new MarkLayer(*m_item);
    return *m_layer;
}

QTextDocument *FoundText::document() const
{
    auto *const held = m_item->property("textDocument").value<QQuickTextDocument *>();
    return held ? held->textDocument() : nullptr;
}

QPointF FoundText::padding() const
{
    return {m_item->property("leftPadding").toReal(), m_item->property("topPadding").toReal()};
}

QString FoundText::plainText() const
{
    const auto *plot = qobject_cast<const ChartPlot *>(m_item);
    return plot ? plot->labels().join(u'\n') : m_item->property("text").toString();
}

void FoundText::find(const FindTerms &terms, int serialOfTerms)
{
    QTextDocument *const words = document();
    const int revision = words ? words->revision() : 0;
    const QString text = words ? QString() : plainText();
    if (m_serial == serialOfTerms && m_revision == revision && m_text == text)
        return;
    m_serial = serialOfTerms;
    m_revision = revision;
    m_text = text;
    m_finds.clear();
    qsizetype start = 0;
    const auto parts = qobject_cast<const ChartPlot *>(m_item) ? text.split(u'\n') : QStringList{text};
    for (const QString &line : parts) {
        const auto finds = terms.in(line);
        for (const FindTerms::Find &found : finds)
            m_finds.append({start + found.start, found.length});
        start += line.size() + 1;
    }
    for (QTextBlock block = words ? words->begin() : QTextBlock(); block.isValid(); block = block.next()) {
        const auto finds = terms.in(block.text());
        for (const FindTerms::Find &found : finds)
            m_finds.append({block.position() + found.start, found.length});
    }
}

QRectF FoundText::blockRect(qsizetype find) const
{
    QTextDocument *const words = document();
    return words->documentLayout()
        ->blockBoundingRect(words->findBlock(static_cast<int>(m_finds[find].start)))
        .translated(padding());
}

QList<QRectF> FoundText::rects(qsizetype find) const
{
    const auto start = static_cast<int>(m_finds[find].start);
    const auto length = static_cast<int>(m_finds[find].length);
    if (const QTextDocument *words = document()) {
        const QTextBlock block = words->findBlock(start);
        const QPointF origin = blockRect(find).topLeft(); // lays it out, if that is still to be done
        return rectsIn(*block.layout(), origin, start - block.position(), length);
    }
    if (const auto *plot = qobject_cast<const ChartPlot *>(m_item))
        return {plot->labelPlace(QStringView(m_text).first(start).count(u'\n'))};
    QTextLayout layout(m_text, m_item->property("font").value<QFont>());
    layOut(layout, *m_item, m_item->width());
    return rectsIn(layout, padding(), start, length);
}

std::pair<qsizetype, qsizetype> FoundText::between(double top, double bottom) const
{
    if (!document())
        return {0, m_finds.size()};
    const auto all = std::views::iota(qsizetype{0}, m_finds.size());
    const auto first =
        std::ranges::partition_point(all, [&](qsizetype find) { return blockRect(find).bottom() < top; });
    const auto end =
        std::ranges::partition_point(std::ranges::subrange(first, all.end()),
                                     [&](qsizetype find) { return blockRect(find).top() <= bottom; });
    return {first - all.begin(), end - all.begin()};
}

} // namespace morvane
