#include "views/ReplySelection.h"

#include <QKeyEvent>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

void collectTexts(const QQuickItem &item, QList<QQuickItem *> &found)
{
    const auto children = item.childItems();
    for (QQuickItem *child : children) {
        if (!child->isVisible())
            continue;
        if (child->inherits("QQuickTextEdit"))
            found.append(child);
        else
            collectTexts(*child, found);
    }
}

void selectIn(QQuickItem *text, int from, int to)
{
    QMetaObject::invokeMethod(text, "select", Q_ARG(int, from), Q_ARG(int, to));
}

int lengthOf(QQuickItem *text)
{
    return text->property("length").toInt();
}

} // namespace

ReplySelection::Texts ReplySelection::texts() const
{
    Texts found;
    collectTexts(*this, found);
    return found;
}

// The text at the height of the place, or the next one above it.
qsizetype ReplySelection::indexAt(const Texts &texts, QPointF place) const
{
    qsizetype index = 0;
    for (qsizetype i = 0; i < texts.size(); ++i) {
        if (texts[i]->mapToItem(this, QPointF()).y() <= place.y())
            index = i;
    }
    return index;
}

int ReplySelection::positionAt(QQuickItem *text, QPointF place) const
{
    const QPointF local = text->mapFromItem(this, place);
    if (local.y() > text->height())
        return lengthOf(text);
    int position = 0;
    QMetaObject::invokeMethod(text, "positionAt", Q_RETURN_ARG(int, position), Q_ARG(qreal, local.x()),
                              Q_ARG(qreal, local.y()));
    return position;
}

ReplySelection::ReplySelection(QQuickItem *parent)
    : QQuickItem(parent)
{
    setFiltersChildMouseEvents(true);
}

bool ReplySelection::childMouseEventFilter(QQuickItem *item, QEvent *event)
{
    const bool presses = event->type() == QEvent::MouseButtonPress;
    if (presses || event->type() == QEvent::MouseMove) {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        const QPointF place = mapFromItem(item, mouse->position());
        if (presses && mouse->button() == Qt::LeftButton)
            begin(place);
        else if (mouse->buttons() & Qt::LeftButton)
            extendTo(place);
    }
    return false; // the texts go on selecting
}

void ReplySelection::begin(QPointF place)
{
    clearOthers();
    if (m_origin)
        m_origin->removeEventFilter(this);
    m_origin.clear();
    const auto all = texts();
    for (QQuickItem *text : all) {
        if (text->contains(text->mapFromItem(this, place)))
            m_origin = text;
    }
    if (!m_origin)
        return;
    m_anchor = positionAt(m_origin, place);
    m_origin->installEventFilter(this);
}

void ReplySelection::extendTo(QPointF place)
{
    // The text where it began sees the same move after this, and would select less.
    if (m_origin)
        QMetaObject::invokeMethod(
            this, [this, place] { select(place); }, Qt::QueuedConnection);
}

void ReplySelection::select(QPointF place)
{
    const Texts all = texts();
    const qsizetype origin = all.indexOf(m_origin.data());
    if (origin < 0)
        return;
    clearOthers();
    const qsizetype target = indexAt(all, place);
    if (target == origin)
        return;
    const bool down = target > origin;
    selectIn(m_origin, m_anchor, down ? lengthOf(m_origin) : 0);
    for (qsizetype i = std::min(origin, target); i <= std::max(origin, target); ++i) {
        if (i == origin)
            continue;
        const int length = lengthOf(all[i]);
        const int end = i == target ? positionAt(all[i], place) : down ? length : 0;
        selectIn(all[i], down ? 0 : length, end);
        m_others.append(all[i]);
    }
}

void ReplySelection::clearOthers()
{
    for (const auto &text : std::exchange(m_others, {})) {
        if (text)
            QMetaObject::invokeMethod(text, "deselect");
    }
}

bool ReplySelection::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusOut) {
        clearOthers();
    } else if (event->type() == QEvent::KeyPress && !m_others.isEmpty() &&
               static_cast<QKeyEvent *>(event)->matches(QKeySequence::Copy)) {
        QStringList parts;
        const auto all = texts();
        for (QQuickItem *text : all) {
            const QString part = text->property("selectedText").toString();
            if (!part.isEmpty())
                parts.append(part);
        }
        Q_EMIT copyAsked(parts.join(u"\n\n"_s));
        return true;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace morvane
