#pragma once

#include "view_models/find/FindPlace.h"
#include "view_models/find/FindTerms.h"
#include "views/FoundText.h"

#include <QColor>
#include <QPointer>
#include <QQuickItem>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

#include <map>

namespace morvane {

// Marks what is found in the messages that a list shows, and brings the current find into view. It looks at
// what is shown before each frame, and only while there is something to find.
class FindMarks : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickItem *view MEMBER m_view NOTIFY viewChanged)            // a ListView of MessageRow
    Q_PROPERTY(QVariant terms READ terms WRITE setTerms NOTIFY termsChanged) // FindTerms
    Q_PROPERTY(QVariant place READ place WRITE setPlace NOTIFY placeChanged) // a FindPlace
    // What covers the top of the view.
    Q_PROPERTY(double covered MEMBER m_covered NOTIFY lookChanged)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY lookChanged)
    Q_PROPERTY(QColor currentColor MEMBER m_currentColor NOTIFY lookChanged)
    Q_PROPERTY(QColor outline MEMBER m_outline NOTIFY lookChanged)

public:
    explicit FindMarks(QQuickItem *parent = nullptr);

    [[nodiscard]] QVariant terms() const { return QVariant::fromValue(m_terms); }
    void setTerms(const QVariant &value);
    [[nodiscard]] QVariant place() const { return QVariant::fromValue(m_place); }
    void setPlace(const QVariant &value);

    // The row at the top of the view; 0 where there is none.
    Q_INVOKABLE int topRow() const;

Q_SIGNALS:
    void viewChanged();
    void termsChanged();
    void placeChanged();
    void lookChanged();

protected:
    void itemChange(ItemChange change, const ItemChangeData &data) override;

private:
    struct Target {
        FoundText *text = nullptr;
        qsizetype find = 0;
    };
    using Items = QList<QQuickItem *>;

    void refresh();
    void mark();
    void markText(FoundText &text, const Target &current);
    void seek();
    [[nodiscard]] QQuickItem *rowItem(int row) const;
    [[nodiscard]] Items rowsInView() const;
    [[nodiscard]] bool isInView(const QQuickItem &item) const;
    [[nodiscard]] Target target();
    [[nodiscard]] FoundText &foundIn(QQuickItem &text);
    void scrollTo(const Target &target);
    void requestFrame();

    QPointer<QQuickItem> m_view;
    FindTerms m_terms;
    int m_serial = 0; // of the terms
    FindPlace m_place;
    double m_covered = 0;
    QColor m_color;
    QColor m_currentColor;
    QColor m_outline;
    int m_framesToSeek = 0;
    QMetaObject::Connection m_frames;
    std::map<QQuickItem *, FoundText> m_found; // of the rows that are there
};

} // namespace morvane
