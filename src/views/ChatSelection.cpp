#include "views/ChatSelection.h"

#include "views/BlockDocument.h"

#include <QKeyEvent>
#include <QQuickWindow>
#include <QTimerEvent>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int scrollInterval = 16; // ms
constexpr double fastest = 40;     // px at once

bool isText(const QQuickItem *item)
{
    return item && item->inherits("QQuickTextEdit");
}

void collectTexts(QQuickItem &item, QList<QQuickItem *> &found)
{
    if (!item.isVisible())
        return;
    if (isText(&item)) {
        found.append(&item);
        return;
    }
    const auto children = item.childItems();
    for (QQuickItem *child : children)
        collectTexts(*child, found);
}

// What is copied as one: a block and the texts that draw it, if there are any, or a text outside of a block.
struct Unit {
    const QQuickItem *block = nullptr;
    QList<QQuickItem *> texts;
};

void collectUnits(QQuickItem &item, QList<Unit> &found)
{
    if (!item.isVisible())
        return;
    const bool isBlock = item.property("plainText").isValid();
    if (isBlock || isText(&item)) {
        Unit unit{isBlock ? &item : nullptr, {}};
        collectTexts(item, unit.texts);
        found.append(unit);
        return;
    }
    const auto children = item.childItems();
    for (QQuickItem *child : children)
        collectUnits(*child, found);
}

QQuickItem *descendant(const QQuickItem &item, const QString &name)
{
    const auto children = item.childItems();
    for (QQuickItem *child : children) {
        if (child->objectName() == name && child->isVisible())
            return child;
        if (QQuickItem *found = descendant(*child, name))
            return found;
    }
    return nullptr;
}

QQuickItem *ancestor(QQuickItem *item, auto isMeant)
{
    while (item && !isMeant(item))
        item = item->parentItem();
    return item;
}

void selectIn(QQuickItem *text, int from, int to)
{
    QMetaObject::invokeMethod(text, "select", Q_ARG(int, from), Q_ARG(int, to));
}

int lengthOf(const QQuickItem *text)
{
    return text->property("length").toInt();
}

int startIn(const QQuickItem *text)
{
    return text->property("selectionStart").toInt();
}

int endIn(const QQuickItem *text)
{
    return text->property("selectionEnd").toInt();
}

bool isWhole(const QQuickItem *text)
{
    return endIn(text) - startIn(text) == lengthOf(text);
}

// The text at the place, or else the last one that stands before it.
qsizetype indexAt(const QList<QQuickItem *> &texts, const QQuickItem *in, QPointF place)
{
    qsizetype index = 0;
    for (qsizetype i = 0; i < texts.size(); ++i) {
        const QRectF area = texts[i]->mapRectToItem(in, texts[i]->boundingRect());
        if (area.bottom() < place.y() || (area.top() <= place.y() && area.left() <= place.x()) || i == 0)
            index = i;
    }
    return index;
}

int positionAt(QQuickItem *text, const QQuickItem *in, QPointF place)
{
    const QPointF local = text->mapFromItem(in, place);
    if (local.y() > text->height())
        return lengthOf(text);
    int position = 0;
    QMetaObject::invokeMethod(text, "positionAt", Q_RETURN_ARG(int, position), Q_ARG(qreal, local.x()),
                              Q_ARG(qreal, local.y()));
    return position;
}

// A part of what is shown, without the line feeds that only part its longest lines.
QString asWritten(QStringView shown, QStringView written, qsizetype from, qsizetype to)
{
    QString text;
    qsizetype at = 0;
    for (qsizetype i = 0; i < std::min(to, shown.size()); ++i) {
        if (at >= written.size() || shown[i] != written[at])
            continue;
        ++at;
        if (i >= from)
            text += shown[i];
    }
    return text;
}

QString selectedIn(const QQuickItem *text, const QQuickItem *block)
{
    if (const auto *document = text->findChild<BlockDocument *>(QString(), Qt::FindDirectChildrenOnly))
        return document->textBetween(startIn(text), endIn(text));
    if (!block || !text->property("shownText").isValid())
        return text->property("selectedText").toString();
    const QString shown = text->property("shownText").toString();
    const QString written = block->property("plainText").toString();
    const bool toTheEnd = endIn(text) == lengthOf(text); // and with it what is folded away
    return toTheEnd ? written.sliced(asWritten(shown, written, 0, startIn(text)).size())
                    : asWritten(shown, written, startIn(text), endIn(text));
}

bool besides(QQuickItem *left, QQuickItem *right)
{
    const double top = right->mapToItem(left, QPointF()).y();
    return top < left->height() && top + right->height() > 0;
}

QString selectedIn(const Unit &unit)
{
    if (unit.block && std::ranges::all_of(unit.texts, isWhole))
        return unit.block->property("plainText").toString();
    QString words;
    QQuickItem *former = nullptr;
    for (QQuickItem *text : unit.texts) {
        if (startIn(text) == endIn(text))
            continue;
        if (former)
            words += besides(former, text) ? u'\t' : u'\n';
        words += selectedIn(text, unit.block);
        former = text;
    }
    return words;
}

QQuickItem *blocksWith(QQuickItem *text)
{
    return ancestor(text, [](QQuickItem *item) { return item->objectName() == "replyBlocks"_L1; });
}

} // namespace

ChatSelection::ChatSelection(QQuickItem *parent)
    : QQuickItem(parent)
{
    setFiltersChildMouseEvents(true);
}

QQuickItem *ChatSelection::rowOf(QQuickItem *item)
{
    return ancestor(item, [](QQuickItem *each) {
        return each->property("messageId").isValid() && each->property("isUser").isValid();
    });
}

// Those that a selection goes through: all of the blocks of a reply, elsewhere the one alone.
ChatSelection::Texts ChatSelection::textsWith(QQuickItem *text)
{
    QQuickItem *blocks = blocksWith(text);
    Texts found;
    if (text)
        collectTexts(blocks ? *blocks : *text, found);
    return found;
}

QString ChatSelection::textIn(QQuickItem *row) const
{
    if (m_wholeChat)
        return m_model->wholeText();
    if (!row)
        return {};
    if (!m_wholeMessage.isEmpty() && row->property("messageId") == m_wholeMessage)
        return m_model->plainText(m_wholeMessage);
    QList<Unit> units;
    collectUnits(*row, units);
    QStringList parts;
    QStringList wordless; // drawn without a text, since the last selected one
    for (const Unit &unit : std::as_const(units)) {
        const QString part = selectedIn(unit);
        if (part.isEmpty())
            continue;
        if (unit.texts.isEmpty()) {
            wordless.append(part);
            continue;
        }
        if (!parts.isEmpty())
            parts += wordless;
        wordless.clear();
        parts.append(part);
    }
    return parts.join(u"\n\n"_s);
}

QString ChatSelection::markdownIn(QQuickItem *row) const
{
    if (m_wholeChat)
        return m_model->wholeMarkdown();
    const QString id = row ? row->property("messageId").toString() : QString();
    const QQuickItem *blocks = row ? descendant(*row, u"replyBlocks"_s) : nullptr;
    qsizetype first = -1;
    qsizetype last = -1;
    const auto drawn = blocks && id != m_wholeMessage ? blocks->childItems() : Texts();
    for (qsizetype i = 0; i < drawn.size(); ++i) {
        Texts texts;
        collectTexts(*drawn[i], texts);
        if (std::ranges::all_of(texts, [](auto *text) { return startIn(text) == endIn(text); }))
            continue;
        first = first < 0 ? i : first;
        last = i;
    }
    return first < 0 ? m_model->markdown(id) : m_model->markdown(id, first, last);
}

void ChatSelection::selectMore(QQuickItem *row)
{
    const QString id = row ? row->property("messageId").toString() : QString();
    if (id.isEmpty())
        return;
    const bool grows = m_wholeMessage == id;
    clear();
    setWhole(id, grows);
    if (grows)
        return;
    Texts texts;
    const QString scope = row->property("isUser").toBool() ? u"ownWords"_s : u"replyBlocks"_s;
    if (QQuickItem *all = descendant(*row, scope))
        collectTexts(*all, texts);
    for (QQuickItem *text : std::as_const(texts)) {
        QMetaObject::invokeMethod(text, "selectAll");
        m_others.append(text);
    }
}

void ChatSelection::clear()
{
    setWhole({}, false);
    for (const auto &text : std::exchange(m_others, {})) {
        if (text)
            QMetaObject::invokeMethod(text, "deselect");
    }
}

void ChatSelection::setWhole(const QString &messageId, bool chat)
{
    m_wholeMessage = messageId;
    if (std::exchange(m_wholeChat, chat) != chat)
        Q_EMIT wholeChatChanged();
}

// By the pointer

bool ChatSelection::childMouseEventFilter(QQuickItem *item, QEvent *event)
{
    const bool presses = event->type() == QEvent::MouseButtonPress;
    if (presses || event->type() == QEvent::MouseMove) {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        const QPointF place = mapFromItem(item, mouse->position());
        if (presses && mouse->button() == Qt::LeftButton)
            begin(place);
        else if (mouse->buttons() & Qt::LeftButton)
            extendTo(place);
    } else if (event->type() == QEvent::MouseButtonRelease || event->type() == QEvent::UngrabMouse) {
        m_scroll.stop();
    }
    return false; // the texts go on selecting
}

void ChatSelection::begin(QPointF place)
{
    clear();
    m_scroll.stop();
    m_origin.clear();
    Texts texts;
    collectTexts(*this, texts);
    for (QQuickItem *text : std::as_const(texts)) {
        if (text->contains(text->mapFromItem(this, place)))
            m_origin = text;
    }
    if (m_origin)
        m_anchor = positionAt(m_origin, this, place);
}

void ChatSelection::extendTo(QPointF place)
{
    if (!m_origin)
        return;
    m_place = place;
    const QRectF shown = m_view ? m_view->mapRectToItem(this, m_view->boundingRect()) : boundingRect();
    if (place.y() >= shown.top() && place.y() <= shown.bottom())
        m_scroll.stop();
    else if (!m_scroll.isActive())
        m_scroll.start(scrollInterval, this);
    // The text where it began sees the same move after this, and would select less.
    QMetaObject::invokeMethod(this, &ChatSelection::select, Qt::QueuedConnection);
}

void ChatSelection::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_scroll.timerId()) {
        QQuickItem::timerEvent(event);
        return;
    }
    if (!m_origin || !m_view) {
        m_scroll.stop();
        return;
    }
    const QRectF shown = m_view->mapRectToItem(this, m_view->boundingRect());
    const QRectF row = rowOf(m_origin)->mapRectToItem(this, rowOf(m_origin)->boundingRect());
    const double past = m_place.y() < shown.top() ? m_place.y() - shown.top() : m_place.y() - shown.bottom();
    // No farther than the message goes.
    const double left =
        past < 0 ? std::min(0.0, row.top() - shown.top()) : std::max(0.0, row.bottom() - shown.bottom());
    const double step = past < 0 ? std::max({past, -fastest, left}) : std::min({past, fastest, left});
    if (step != 0)
        Q_EMIT scrollAsked(step);
    select();
}

void ChatSelection::select()
{
    const Texts all = textsWith(m_origin);
    const qsizetype origin = all.indexOf(m_origin.data());
    if (origin < 0)
        return;
    clear();
    const qsizetype target = indexAt(all, this, m_place);
    if (target == origin) {
        if (m_scroll.isActive()) // it doesn't see that it moves below the pointer
            selectIn(m_origin, m_anchor, positionAt(m_origin, this, m_place));
        return;
    }
    const bool down = target > origin;
    selectIn(m_origin, m_anchor, down ? lengthOf(m_origin) : 0);
    for (qsizetype i = std::min(origin, target); i <= std::max(origin, target); ++i) {
        if (i == origin)
            continue;
        const int length = lengthOf(all[i]);
        const int end = i == target ? positionAt(all[i], this, m_place) : down ? length : 0;
        selectIn(all[i], down ? 0 : length, end);
        m_others.append(all[i]);
    }
}

// By the keys

void ChatSelection::itemChange(ItemChange change, const ItemChangeData &data)
{
    if (change == ItemSceneChange && data.window) {
        connect(data.window, &QQuickWindow::activeFocusItemChanged, this,
                [this, window = data.window] { watch(window->activeFocusItem()); });
    }
    QQuickItem::itemChange(change, data);
}

void ChatSelection::watch(QQuickItem *focused)
{
    if (m_watched)
        m_watched->removeEventFilter(this);
    m_watched = isText(focused) && isAncestorOf(focused) ? focused : nullptr;
    if (m_watched)
        m_watched->installEventFilter(this);
}

bool ChatSelection::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusOut) {
        const auto reason = static_cast<QFocusEvent *>(event)->reason();
        if (reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason)
            clear();
    }
    if (event->type() != QEvent::KeyPress)
        return QQuickItem::eventFilter(watched, event);
    const auto *key = static_cast<QKeyEvent *>(event);
    QQuickItem *row = rowOf(m_watched);
    if (key->matches(QKeySequence::SelectAll)) {
        const bool isAside = !blocksWith(m_watched) && m_watched->objectName() != "ownWords"_L1;
        if (isAside && !isWhole(m_watched)) // what was thought, or what a tool was given
            QMetaObject::invokeMethod(m_watched, "selectAll");
        else
            selectMore(row);
        return true;
    }
    if (key->matches(QKeySequence::Copy)) {
        if (const QString text = textIn(row); !text.isEmpty())
            Q_EMIT copyAsked(text);
        return true;
    }
    return QQuickItem::eventFilter(watched, event);
}

} // namespace morvane
