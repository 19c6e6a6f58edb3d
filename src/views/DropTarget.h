#pragma once

#include "view_models/chat/HandedOver.h"

#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// Takes what is dragged over it out of another program. Lies over all else and sees nothing but drags. A drag
// ends as a copy: nothing is ever taken away from where it came from.
class DropTarget : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(Offer offer READ offer NOTIFY offerChanged)

public:
    // What hangs over it.
    enum class Offer { None, Attachment, Text };
    Q_ENUM(Offer)

    explicit DropTarget(QQuickItem *parent = nullptr);

    [[nodiscard]] Offer offer() const { return m_offer; }

Q_SIGNALS:
    void offerChanged();
    void dropped(const morvane::HandedOver &handed);

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void setOffer(Offer offer);

    Offer m_offer = Offer::None;
};

} // namespace morvane
