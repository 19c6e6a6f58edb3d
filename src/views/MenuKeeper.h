#pragma once

#include "views/WindowKeeper.h"

#include <QPointF>
#include <QPointer>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// Notices in one window where a menu is asked for, by the right button, by the menu key and by Shift+F10, and
// says what is there: a text, a message, or both. Lies in the window beside what it looks at. The list of
// chats has menus of its own and is left alone.
//
// It also lets go of what is selected in a text that is only for reading when the focus moves on, but not
// when a menu or another window has it for a while.
class MenuKeeper : public morvane::WindowKeeper {
    Q_OBJECT
    QML_ELEMENT
    // Of the last place that was asked about; null and empty for none.
    Q_PROPERTY(QQuickItem *text READ text NOTIFY found)
    Q_PROPERTY(QQuickItem *block READ block NOTIFY found) // has a `plainText`
    Q_PROPERTY(QQuickItem *row READ row NOTIFY found)     // has a `messageId`
    Q_PROPERTY(QString link READ link NOTIFY found)

public:
    explicit MenuKeeper(QQuickItem *parent = nullptr);

    [[nodiscard]] QQuickItem *text() const { return m_text; }
    [[nodiscard]] QQuickItem *block() const { return m_block; }
    [[nodiscard]] QQuickItem *row() const { return m_row; }
    [[nodiscard]] const QString &link() const { return m_link; }

    // The menu has closed: the keyboard goes on where it was.
    Q_INVOKABLE void giveBack();

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void found();
    void asked(QPointF place); // of this item

private:
    void watch() override;
    [[nodiscard]] bool ask(QQuickItem *item, QPointF place, const QString &link);
    [[nodiscard]] bool askAt(QPointF place);
    [[nodiscard]] bool askAtFocus();

    QPointer<QQuickItem> m_watched; // it has the focus
    QPointer<QQuickItem> m_focused; // had it when the menu was asked for
    QPointer<QQuickItem> m_text;
    QPointer<QQuickItem> m_block;
    QPointer<QQuickItem> m_row;
    QString m_link;
};

} // namespace morvane
