#pragma once

#include <QList>
#include <QPointF>
#include <QPointer>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// Holds texts that belong together, and carries a selection on from the one in which it was begun into those
// above or below. Each text selects within itself; this item sees the same presses and moves, and selects in
// the others.
class ReplySelection : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT

public:
    explicit ReplySelection(QQuickItem *parent = nullptr);

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    // The keys for copying were pressed on a selection that spans several texts.
    void copyAsked(const QString &text);

protected:
    bool childMouseEventFilter(QQuickItem *item, QEvent *event) override;

private:
    using Texts = QList<QQuickItem *>;

    [[nodiscard]] Texts texts() const;
    [[nodiscard]] qsizetype indexAt(const Texts &texts, QPointF place) const;
    [[nodiscard]] int positionAt(QQuickItem *text, QPointF place) const;
    void begin(QPointF place);
    void extendTo(QPointF place);
    void select(QPointF place);
    void clearOthers();

    QPointer<QQuickItem> m_origin; // where it was begun
    int m_anchor = 0;              // place in its text
    QList<QPointer<QQuickItem>> m_others;
};

} // namespace morvane
