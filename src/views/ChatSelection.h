#pragma once

#include "view_models/chat/MessageListModel.h"

#include <QBasicTimer>
#include <QList>
#include <QPointF>
#include <QPointer>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// Holds the list of a chat's messages, and lets the person select in it: on from one text of a reply into
// those above or below, a whole message, and the whole chat. Each text selects within itself; this item sees
// the same presses, moves and keys, and selects in the others.
//
// What is copied is the text of each block as its model gives it (`plainText` of the item that draws the
// block), also where part of it is out of sight, and of a block that is selected in part the words that are.
class ChatSelection : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickItem *view MEMBER m_view NOTIFY viewChanged) // the list; its rows have a `messageId`
    Q_PROPERTY(morvane::MessageListModel *model MEMBER m_model NOTIFY modelChanged)
    Q_PROPERTY(bool wholeChat READ isWholeChat NOTIFY wholeChatChanged)

public:
    explicit ChatSelection(QQuickItem *parent = nullptr);

    [[nodiscard]] bool isWholeChat() const { return m_wholeChat; }

    // What is selected in a row, or in the chat with it; empty for nothing.
    Q_INVOKABLE QString textIn(QQuickItem *row) const;
    // The Markdown of the message or the chat that is selected, else that of the blocks of the row's reply
    // that anything is selected in, each whole; of all of the reply where there are none.
    Q_INVOKABLE QString markdownIn(QQuickItem *row) const;
    // A whole message, and when that is selected already the whole chat.
    Q_INVOKABLE void selectMore(QQuickItem *row);
    Q_INVOKABLE void clear();

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void viewChanged();
    void modelChanged();
    void wholeChatChanged();
    // The keys for copying were pressed.
    void copyAsked(const QString &text);
    // The selection was dragged past an edge of the list.
    void scrollAsked(double distance); // px, downwards

protected:
    void itemChange(ItemChange change, const ItemChangeData &data) override;
    bool childMouseEventFilter(QQuickItem *item, QEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    using Texts = QList<QQuickItem *>;

    void watch(QQuickItem *focused);
    [[nodiscard]] static QQuickItem *rowOf(QQuickItem *item);
    [[nodiscard]] static Texts textsWith(QQuickItem *text);
    void begin(QPointF place);
    void extendTo(QPointF place);
    void select();
    void setWhole(const QString &messageId, bool chat);

    QPointer<QQuickItem> m_view;
    QPointer<MessageListModel> m_model;
    QPointer<QQuickItem> m_watched; // it has the focus
    QPointer<QQuickItem> m_origin;  // where the selection was begun
    int m_anchor = 0;               // place in its text
    QPointF m_place;                // where the pointer is
    QBasicTimer m_scroll;           // runs while that is past an edge
    QList<QPointer<QQuickItem>> m_others;
    QString m_wholeMessage; // its id
    bool m_wholeChat = false;
};

} // namespace morvane
