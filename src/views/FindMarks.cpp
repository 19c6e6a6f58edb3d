#include "views/FindMarks.h"

#include <QQuickWindow>

#include <algorithm>
#include <set>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Rows have their final heights a few frames after they were made.
constexpr int framesToSeek = 8;
constexpr double margin = 24; // between the current find and the view's edges
constexpr int centred = 1;    // ListView.Center

void collect(QQuickItem &item, const char *type, QList<QQuickItem *> &found)
{
    if (!item.isVisible())
        return;
    if (item.inherits(type)) {
        found.append(&item);
        return;
    }
    const auto children = item.childItems();
    for (QQuickItem *child : children)
        collect(*child, type, found);
}

// The drawn texts below an item: those that can be selected and a chart, in a card without such ones its
// labels.
QList<QQuickItem *> textsIn(QQuickItem &item)
{
    QList<QQuickItem *> texts;
    collect(item, "QQuickTextEdit", texts);
    texts.removeIf([](QQuickItem *text) { return text->property("text").toString().isEmpty(); });
    collect(item, "morvane::ChartPlot", texts);
    if (texts.isEmpty())
        collect(item, "QQuickText", texts);
    return texts;
}

// The blocks that a reply's row draws, in order; the row itself where the person speaks.
QList<QQuickItem *> blocksOf(QQuickItem &row)
{
    if (row.property("isUser").toBool())
        return {&row};
    const auto *const column = row.findChild<QQuickItem *>(u"replyBlocks"_s);
    QList<QQuickItem *> blocks = column ? column->childItems() : QList<QQuickItem *>();
    const auto end = std::find_if(blocks.begin(), blocks.end(),
                                  [](QQuickItem *item) { return item->inherits("QQuickRepeater"); });
    return blocks.first(end - blocks.begin());
}

void showHiddenBlocks(QQuickItem &row, int block)
{
    auto *const button = row.findChild<QQuickItem *>(u"showMoreBlocks"_s);
    for (qsizetype shown = -1; button && button->isVisible() && blocksOf(row).size() <= block;) {
        if (std::exchange(shown, blocksOf(row).size()) == blocksOf(row).size())
            return;
        QMetaObject::invokeMethod(button, "click");
    }
}

// Whatever holds the text and is folded.
void unfold(QQuickItem &text, const QQuickItem &row)
{
    for (QQuickItem *item = &text; item && item != &row; item = item->parentItem()) {
        if (item->property("folded").toBool())
            item->setProperty("unfolded", true);
    }
}

} // namespace

FindMarks::FindMarks(QQuickItem *parent)
    : QQuickItem(parent)
{
    connect(this, &FindMarks::lookChanged, this, &FindMarks::requestFrame);
}

void FindMarks::setTerms(const QVariant &value)
{
    const auto terms = value.value<FindTerms>();
    if (m_terms == terms)
        return;
    m_terms = terms;
    ++m_serial;
    requestFrame();
    Q_EMIT termsChanged();
}

void FindMarks::setPlace(const QVariant &value)
{
    const auto place = value.value<FindPlace>();
    if (m_place == place)
        return;
    m_place = place;
    m_framesToSeek = place.row < 0 ? 0 : framesToSeek;
    requestFrame();
    Q_EMIT placeChanged();
}

void FindMarks::itemChange(ItemChange change, const ItemChangeData &data)
{
    QQuickItem::itemChange(change, data);
    if (change == ItemSceneChange)
        requestFrame();
}

// Follows the window's frames while there is something to mark.
void FindMarks::requestFrame()
{
    disconnect(m_frames);
    if (m_terms.isEmpty() || !window()) {
        m_found.clear();
        return;
    }
    m_frames = connect(window(), &QQuickWindow::afterAnimating, this, &FindMarks::refresh);
    window()->update();
}

int FindMarks::topRow() const
{
    const Items rows = rowsInView();
    const auto top = std::min_element(rows.begin(), rows.end(),
                                      [](const auto *a, const auto *b) { return a->y() < b->y(); });
    return top == rows.end() ? 0 : (*top)->property("index").toInt();
}

QQuickItem *FindMarks::rowItem(int row) const
{
    QQuickItem *item = nullptr;
    if (m_view)
        QMetaObject::invokeMethod(m_view, "itemAtIndex", Q_RETURN_ARG(QQuickItem *, item), Q_ARG(int, row));
    return item;
}

bool FindMarks::isInView(const QQuickItem &item) const
{
    const QRectF place = item.mapRectToItem(m_view, item.boundingRect());
    return place.bottom() >= 0 && place.top() <= m_view->height();
}

FindMarks::Items FindMarks::rowsInView() const
{
    auto *const content = m_view ? m_view->property("contentItem").value<QQuickItem *>() : nullptr;
    Items rows = content ? content->childItems() : Items();
    rows.removeIf([this](QQuickItem *item) { // others wait there to be used again
        const QVariant index = item->property("index");
        return !index.isValid() || rowItem(index.toInt()) != item || !isInView(*item);
    });
    return rows;
}

FoundText &FindMarks::foundIn(QQuickItem &text)
{
    FoundText &found = m_found.try_emplace(&text, text).first->second;
    found.find(m_terms, m_serial);
    return found;
}

void FindMarks::refresh()
{
    if (!m_view)
        return;
    std::erase_if(m_found, [](const auto &entry) { return !entry.second.item(); });
    seek();
    mark();
}

void FindMarks::mark()
{
    const Target current = target();
    std::set<QQuickItem *> marked;
    const Items rows = rowsInView();
    for (QQuickItem *row : rows) {
        const Items blocks = blocksOf(*row);
        for (QQuickItem *block : blocks) {
            const Items texts = isInView(*block) ? textsIn(*block) : Items();
            for (QQuickItem *text : texts) {
                marked.insert(text);
                markText(foundIn(*text), current);
            }
        }
    }
    std::erase_if(m_found, [&marked](const auto &entry) { return !marked.contains(entry.first); });
}

void FindMarks::markText(FoundText &text, const Target &current)
{
    if (text.count() == 0) {
        if (text.hasLayer())
            text.layer().setMarks({});
        return;
    }
    const double top = m_view->mapToItem(text.item(), QPointF()).y();
    const auto [first, end] = text.between(top, top + m_view->height());
    MarkLayer::Marks marks{.color = m_color, .currentColor = m_currentColor, .outline = m_outline};
    for (qsizetype find = first; find < end; ++find) {
        const bool isCurrent = current.text == &text && current.find == find;
        (isCurrent ? marks.current : marks.finds) += text.rects(find);
    }
    text.layer().setMarks(marks);
}

FindMarks::Target FindMarks::target()
{
    QQuickItem *const row = m_place.row < 0 ? nullptr : rowItem(m_place.row);
    const Items blocks = row ? blocksOf(*row) : Items();
    qsizetype find = m_place.ordinal;
    const Items texts = m_place.block < blocks.size() ? textsIn(*blocks[m_place.block]) : Items();
    for (QQuickItem *text : texts) {
        FoundText &found = foundIn(*text);
        if (find < found.count())
            return {&found, find};
        find -= found.count();
    }
    return {};
}

void FindMarks::seek()
{
    if (m_framesToSeek == 0)
        return;
    --m_framesToSeek;
    window()->update();
    if (!rowItem(m_place.row))
        QMetaObject::invokeMethod(m_view, "positionViewAtIndex", Q_ARG(int, m_place.row),
                                  Q_ARG(int, centred));
    QQuickItem *const row = rowItem(m_place.row);
    if (!row)
        return;
    showHiddenBlocks(*row, m_place.block);
    const Items blocks = blocksOf(*row);
    const Items texts = m_place.block < blocks.size() ? textsIn(*blocks[m_place.block]) : Items();
    for (QQuickItem *text : texts)
        unfold(*text, *row);
    if (const Target aim = target(); aim.text)
        scrollTo(aim);
}

void FindMarks::scrollTo(const Target &target)
{
    const QList<QRectF> rects = target.text->rects(target.find);
    if (rects.isEmpty())
        return;
    for (QQuickItem *item = target.text->item()->parentItem(); item && item != m_view;
         item = item->parentItem()) {
        if (!item->inherits("QQuickFlickable"))
            continue;
        const QRectF place = target.text->item()->mapRectToItem(item, rects.first());
        const double left = item->property("contentX").toDouble();
        const double rightmost = std::max(0.0, item->property("contentWidth").toDouble() - item->width());
        if (place.left() < 0 || place.right() > item->width())
            item->setProperty("contentX",
                              std::clamp(left + place.left() - item->width() / 3, 0.0, rightmost));
    }
    const QRectF place = target.text->item()->mapRectToItem(m_view, rects.first());
    const double roof = m_covered + margin;
    if (place.top() >= roof && place.bottom() <= m_view->height() - margin)
        return;
    const auto number = [this](const char *name) { return m_view->property(name).toDouble(); };
    const double top = number("originY") - number("topMargin");
    const double end = std::max(top, number("originY") + number("contentHeight") + number("bottomMargin") -
                                         m_view->height());
    const double wanted = number("contentY") + place.top() - std::max(roof, m_view->height() / 3);
    m_view->setProperty("contentY", std::clamp(wanted, top, end));
}

} // namespace morvane
