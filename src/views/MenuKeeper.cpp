#include "views/MenuKeeper.h"

#include "views/BlockDocument.h"

#include <QKeyEvent>
#include <QQuickWindow>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

bool isText(const QQuickItem *item)
{
    return item->inherits("QQuickTextEdit") || item->inherits("QQuickTextInput");
}

bool isForReading(const QQuickItem *item)
{
    return isText(item) && item->property("readOnly").toBool();
}

bool isBlock(const QQuickItem *item)
{
    return item->property("plainText").isValid();
}

bool isRow(const QQuickItem *item)
{
    return item->property("messageId").isValid() && item->property("isUser").isValid();
}

bool hasOwnMenus(const QQuickItem *item)
{
    return item->objectName() == "sidebar"_L1;
}

// Or what dims the window behind one.
bool isPopup(const QQuickItem *item)
{
    return item->parentItem() && item->parentItem()->inherits("QQuickOverlay");
}

QQuickItem *nearest(QQuickItem *item, bool (*isMeant)(const QQuickItem *))
{
    while (item && !isMeant(item))
        item = item->parentItem();
    return item;
}

// Those on top first.
QList<QQuickItem *> childrenOf(const QQuickItem *item)
{
    QList<QQuickItem *> children = item->childItems();
    std::ranges::stable_sort(children, {}, &QQuickItem::z);
    std::ranges::reverse(children);
    return children;
}

// What is meant by a place of the scene. A popup hides what lies below it.
QQuickItem *meantAt(QQuickItem *item, QPointF place)
{
    const bool holds = item->contains(item->mapFromScene(place));
    if (!item->isVisible() || (item->clip() && !holds))
        return nullptr;
    const auto children = childrenOf(item);
    for (QQuickItem *child : children) {
        if (QQuickItem *meant = meantAt(child, place))
            return meant;
    }
    return holds && (isText(item) || isBlock(item) || isRow(item) || hasOwnMenus(item) || isPopup(item))
               ? item
               : nullptr;
}

bool asksForMenu(const QKeyEvent &key)
{
    return key.key() == Qt::Key_Menu || (key.key() == Qt::Key_F10 && key.modifiers() == Qt::ShiftModifier);
}

} // namespace

MenuKeeper::MenuKeeper(QQuickItem *parent)
    : WindowKeeper(parent)
{}

void MenuKeeper::watch()
{
    if (m_watched)
        m_watched->removeEventFilter(this);
    m_watched = window()->activeFocusItem();
    if (m_watched)
        m_watched->installEventFilter(this);
}

bool MenuKeeper::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == window() && event->type() == QEvent::MouseButtonPress) {
        const auto &mouse = static_cast<const QMouseEvent &>(*event);
        if (mouse.button() == Qt::RightButton && askAt(mouse.position()))
            return true;
    } else if (watched == window() && event->type() == QEvent::KeyPress) {
        if (asksForMenu(static_cast<const QKeyEvent &>(*event)) && askAtFocus())
            return true;
    } else if (watched == m_watched && event->type() == QEvent::FocusOut) {
        const auto reason = static_cast<const QFocusEvent &>(*event).reason();
        const bool forAWhile = reason == Qt::PopupFocusReason || reason == Qt::ActiveWindowFocusReason;
        if (!forAWhile && isForReading(m_watched))
            QMetaObject::invokeMethod(m_watched, "deselect");
    }
    return WindowKeeper::eventFilter(watched, event);
}

bool MenuKeeper::askAt(QPointF place)
{
    QQuickItem *item = meantAt(window()->contentItem(), place);
    if (!item)
        return false;
    if (isText(item) && !isForReading(item))
        item->forceActiveFocus(Qt::MouseFocusReason);
    QString link;
    if (item->inherits("QQuickTextEdit")) {
        const QPointF local = item->mapFromScene(place);
        QMetaObject::invokeMethod(item, "linkAt", Q_RETURN_ARG(QString, link), Q_ARG(qreal, local.x()),
                                  Q_ARG(qreal, local.y()));
    }
    return ask(item, place, link);
}

bool MenuKeeper::askAtFocus()
{
    QQuickItem *item = window()->activeFocusItem();
    if (!item)
        return false;
    const QRectF part = isText(item) ? item->property("cursorRectangle").toRectF() : item->boundingRect();
    const QPointF place = item->mapToScene(part.bottomLeft());
    const auto *document = item->findChild<BlockDocument *>(QString(), Qt::FindDirectChildrenOnly);
    return ask(item,
               {std::clamp<double>(place.x(), 0, window()->width()),
                std::clamp<double>(place.y(), 0, window()->height())},
               document ? document->linkAt(item->property("cursorPosition").toInt()) : QString());
}

bool MenuKeeper::ask(QQuickItem *item, QPointF place, const QString &link)
{
    m_text = nearest(item, isText);
    m_row = nearest(item, isRow);
    m_block = nearest(item, isBlock);
    if ((!m_text && !m_row) || !item->isEnabled())
        return false;
    m_link = link;
    m_focused = window()->activeFocusItem();
    Q_EMIT found();
    Q_EMIT asked(mapFromScene(place));
    return true;
}

void MenuKeeper::giveBack()
{
    if (m_focused && m_focused->isVisible() && m_focused->isEnabled())
        m_focused->forceActiveFocus(Qt::PopupFocusReason);
}

} // namespace morvane
