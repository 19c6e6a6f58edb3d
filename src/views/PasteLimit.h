#pragma once

#include "view_models/chat/HandedOver.h"

#include <QPointer>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// Keeps a text that is too long to be laid out from being pasted into a field, by its key or by the middle
// button of the pointer. Whoever owns the field finds it another way. Paste from a menu asks first.
class PasteLimit : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickItem *field READ field WRITE setField NOTIFY fieldChanged REQUIRED)

public:
    using QObject::QObject;

    [[nodiscard]] QQuickItem *field() const { return m_field; }
    void setField(QQuickItem *field);

    // Whether the clipboard's text is too long.
    Q_INVOKABLE bool isExceeded() const;

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void fieldChanged();
    void exceeded(const morvane::HandedOver &handed);

private:
    QPointer<QQuickItem> m_field;
};

} // namespace morvane
