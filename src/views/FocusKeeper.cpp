#include "views/FocusKeeper.h"

#include <QKeyEvent>
#include <QQuickWindow>

#include <algorithm>

namespace morvane {

namespace {

constexpr double margin = 32; // px around what is shown, so that what stands next to it is built too

bool isStep(const QKeyEvent &key)
{
    const bool isTab = key.key() == Qt::Key_Tab || key.key() == Qt::Key_Backtab;
    return isTab && !(key.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
}

bool isPage(const QKeyEvent &key)
{
    const bool isPageKey = key.key() == Qt::Key_PageUp || key.key() == Qt::Key_PageDown;
    return isPageKey && !(key.modifiers() & ~Qt::KeypadModifier);
}

bool isWithin(const QQuickItem *item, const QQuickItem *whole)
{
    return item && whole && (item == whole || whole->isAncestorOf(item));
}

// How far a view has to move to show a stretch of it. Of one that is longer than the view its beginning is
// shown.
double distanceTo(double top, double bottom, double height)
{
    const double air = std::clamp((height - (bottom - top)) / 2, 0.0, margin);
    if (top < air || bottom - top > height)
        return top - air;
    return std::max(0.0, bottom + air - height);
}

bool isText(const QQuickItem *item)
{
    return item && item->inherits("QQuickTextEdit");
}

// A text to write in, which shows its cursor by itself.
bool isField(const QQuickItem *item)
{
    return isText(item) && !item->property("readOnly").toBool();
}

QRectF cursorOf(const QQuickItem *item)
{
    return item->property("cursorRectangle").toRectF();
}

} // namespace

FocusKeeper::FocusKeeper(QQuickItem *parent)
    : WindowKeeper(parent)
{}

bool FocusKeeper::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::TouchBegin:
    case QEvent::TabletPress:
        m_hadRing = false;
        setTabbed(false);
        break;
    case QEvent::ShortcutOverride: // nobody gets to say that a page key is its own
        if (isPage(*static_cast<QKeyEvent *>(event))) {
            event->ignore();
            return true;
        }
        break;
    case QEvent::KeyPress: {
        const auto &key = *static_cast<QKeyEvent *>(event);
        if (isStep(key) && step(key.key() == Qt::Key_Tab && !(key.modifiers() & Qt::ShiftModifier)))
            return true;
        followCursor();
        break;
    }
    default:
        break;
    }
    return WindowKeeper::eventFilter(watched, event);
}

// Where the focus is

void FocusKeeper::watch()
{
    if (m_watched)
        m_watched->disconnect(this);
    m_watched = window()->activeFocusItem();
    if (m_watched) {
        connect(m_watched, &QQuickItem::visibleChanged, this, &FocusKeeper::lookSoon);
        connect(m_watched, &QQuickItem::enabledChanged, this, &FocusKeeper::lookSoon);
    }
    if (m_watched && m_watched != window()->contentItem()) {
        // The window is in front again, which Qt tells of as it does of a click.
        if (m_watched == m_before && m_hadRing &&
            m_watched->property("focusReason").toInt() == Qt::ActiveWindowFocusReason)
            m_watched->setProperty("focusReason", Qt::TabFocusReason);
        if (!holds(m_watched))
            m_isInPopup = true;
        else if (!m_isInPopup)
            remember(*m_watched);
    }
    lookSoon();
}

// Once what hides it has done all it does: it may show it again, or move the focus itself.
void FocusKeeper::lookSoon()
{
    if (std::exchange(m_looks, true))
        return;
    QMetaObject::invokeMethod(this, &FocusKeeper::look, Qt::QueuedConnection);
}

void FocusKeeper::look()
{
    m_looks = false;
    if (!window() || !window()->isActive())
        return;
    QQuickItem *item = window()->activeFocusItem();
    if (item && item != window()->contentItem() && !holds(item))
        return;
    if (std::exchange(m_isInPopup, false) && m_before && !isLost(m_before) &&
        (item == m_before || isLost(item)))
        return comeBack(*m_before);
    if (isLost(item)) {
        if (m_home)
            m_home->forceActiveFocus(Qt::OtherFocusReason);
        return;
    }
    remember(*item);
}

void FocusKeeper::remember(QQuickItem &item)
{
    m_before = &item;
    m_hadRing = item.property("visualFocus").toBool();
}

// A control that the focus returns to by a popup's end shows no ring by itself.
void FocusKeeper::comeBack(QQuickItem &item)
{
    if (!item.hasActiveFocus())
        item.forceActiveFocus(m_hadRing ? Qt::TabFocusReason : Qt::OtherFocusReason);
    else if (m_hadRing)
        item.setProperty("focusReason", Qt::TabFocusReason);
}

bool FocusKeeper::isLost(const QQuickItem *item) const
{
    if (!item || item == window()->contentItem())
        return true;
    if (item == m_home || !holds(item))
        return false;
    // A scope that isn't reached by Tab only holds the focus for others.
    return !item->isVisible() || !item->isEnabled() || (item->isFocusScope() && !item->activeFocusOnTab());
}

// False for what is in a popup.
bool FocusKeeper::holds(const QQuickItem *item) const
{
    return isWithin(item, parentItem());
}

void FocusKeeper::setTabbed(bool tabbed)
{
    if (std::exchange(m_tabbed, tabbed) != tabbed)
        Q_EMIT tabbedChanged();
}

// Where it goes

bool FocusKeeper::step(bool forward)
{
    QQuickItem *from = window()->activeFocusItem();
    if (!holds(from))
        return false;
    QQuickItem *to = next(from, forward);
    if (!to || to == from)
        return false;
    setTabbed(true);
    to->forceActiveFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    if (QQuickItem *reached = window()->activeFocusItem())
        reveal(reached, isField(reached) ? cursorOf(reached) : reached->boundingRect());
    return true;
}

QQuickItem *FocusKeeper::next(QQuickItem *from, bool forward)
{
    const double distance = (m_rows ? m_rows->height() / 2 : 0) * (forward ? 1 : -1);
    QQuickItem *to = nullptr;
    do {
        orderRows();
        to = from->nextItemInFocusChain(forward);
        // At the last row that is built there may be more of them.
    } while (isWithin(from, m_rows) && !isWithin(to, m_rows) && moveRows(distance));
    return to;
}

bool FocusKeeper::moveRows(double distance)
{
    const double before = m_rows->property("contentY").toDouble();
    Q_EMIT rowsMoveAsked(distance);
    return m_rows->property("contentY").toDouble() != before;
}

// A list makes its rows in the order in which they come into view, and so the focus would go through them.
void FocusKeeper::orderRows() const
{
    const auto *content = m_rows ? m_rows->property("contentItem").value<QQuickItem *>() : nullptr;
    if (!content)
        return;
    QList<QQuickItem *> rows = content->childItems();
    if (std::ranges::is_sorted(rows, {}, &QQuickItem::y))
        return;
    std::ranges::stable_sort(rows, {}, &QQuickItem::y);
    for (qsizetype i = 1; i < rows.size(); ++i)
        rows[i]->stackAfter(rows[i - 1]);
}

// What is shown of it

void FocusKeeper::followCursor()
{
    QQuickItem *item = window()->activeFocusItem();
    if (!isText(item) || isField(item) || !holds(item))
        return;
    const auto follow = [this, text = QPointer(item), before = cursorOf(item)] {
        if (text && cursorOf(text) != before)
            reveal(text, cursorOf(text));
    };
    QMetaObject::invokeMethod(this, follow, Qt::QueuedConnection);
}

void FocusKeeper::reveal(QQuickItem *item, const QRectF &part)
{
    for (QQuickItem *view = item->parentItem(); view; view = view->parentItem()) {
        if (!view->inherits("QQuickFlickable"))
            continue;
        const QRectF place = item->mapRectToItem(view, part);
        if (const double distance = distanceTo(place.top(), place.bottom(), view->height()); distance != 0)
            scroll(view, distance);
    }
}

void FocusKeeper::scroll(QQuickItem *view, double distance)
{
    if (view == m_rows) {
        Q_EMIT rowsMoveAsked(distance);
        return;
    }
    const auto number = [view](const char *name) { return view->property(name).toDouble(); };
    const double first = number("originY") - number("topMargin");
    const double last = number("originY") + number("contentHeight") + number("bottomMargin") - view->height();
    view->setProperty("contentY", std::clamp(number("contentY") + distance, first, std::max(first, last)));
}

} // namespace morvane
