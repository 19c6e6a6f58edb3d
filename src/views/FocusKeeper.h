#pragma once

#include "views/WindowKeeper.h"

#include <QPointer>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// Keeps the keyboard of one window where it is of use. Lies in the window beside what it keeps.
//
// Whatever had the focus and was hidden, disabled or taken away gives it to `home`. Tab goes through the rows
// of `rows` in the order in which they stand, those that aren't built yet included, and what it reaches
// scrolls into view, and so does the place in a text that an arrow key leads to. Page Up and Page Down stay
// the window's, whoever would take them. Popups are left alone: they keep their focus themselves.
// Once one has closed, or the window is in front again, the focus is where it was before, with its ring,
// unless somebody has moved it on.
class FocusKeeper : public morvane::WindowKeeper {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickItem *home MEMBER m_home NOTIFY homeChanged)
    // A list whose rows are made as they come into view; none by default. It moves itself when it is asked
    // to.
    Q_PROPERTY(QQuickItem *rows MEMBER m_rows NOTIFY rowsChanged)
    // The focus was moved by Tab and not by the pointer since.
    Q_PROPERTY(bool tabbed READ isTabbed NOTIFY tabbedChanged)

public:
    explicit FocusKeeper(QQuickItem *parent = nullptr);

    [[nodiscard]] bool isTabbed() const { return m_tabbed; }

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void homeChanged();
    void rowsChanged();
    void tabbedChanged();
    void rowsMoveAsked(double distance); // px, downwards

private:
    void watch() override;
    void lookSoon();
    void look();
    void remember(QQuickItem &item);
    void comeBack(QQuickItem &item);
    [[nodiscard]] bool isLost(const QQuickItem *item) const;
    [[nodiscard]] bool holds(const QQuickItem *item) const;
    void setTabbed(bool tabbed);
    [[nodiscard]] bool step(bool forward);
    [[nodiscard]] QQuickItem *next(QQuickItem *from, bool forward);
    [[nodiscard]] bool moveRows(double distance);
    void orderRows() const;
    void followCursor();
    void reveal(QQuickItem *item, const QRectF &part);
    void scroll(QQuickItem *view, double distance);

    QPointer<QQuickItem> m_home;
    QPointer<QQuickItem> m_rows;
    QPointer<QQuickItem> m_watched; // it has the focus
    QPointer<QQuickItem> m_before;  // it had the focus when a popup took it, or has it
    bool m_hadRing = false;         // and showed so
    bool m_isInPopup = false;
    bool m_looks = false; // look() is about to run
    bool m_tabbed = false;
};

} // namespace morvane
