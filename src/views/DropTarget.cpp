#include "views/DropTarget.h"

#include <QDropEvent>
#include <QMimeData>

#include <utility>

namespace morvane {

namespace {

constexpr auto order = HandedOver::Order::pictureFirst;

DropTarget::Offer offerOf(const QDropEvent &event)
{
    if (event.source() || !(event.possibleActions() & Qt::CopyAction))
        return DropTarget::Offer::None; // out of this program itself, or only to be moved
    if (HandedOver::holdsAttachment(*event.mimeData(), order))
        return DropTarget::Offer::Attachment;
    return event.mimeData()->hasText() ? DropTarget::Offer::Text : DropTarget::Offer::None;
}

void answer(QDropEvent &event, DropTarget::Offer offer)
{
    event.setDropAction(Qt::CopyAction);
    event.setAccepted(offer != DropTarget::Offer::None);
}

} // namespace

DropTarget::DropTarget(QQuickItem *parent)
    : QQuickItem(parent)
{
    setFlag(ItemAcceptsDrops);
}

void DropTarget::dragEnterEvent(QDragEnterEvent *event)
{
    setOffer(offerOf(*event));
    answer(*event, m_offer);
}

void DropTarget::dragMoveEvent(QDragMoveEvent *event)
{
    answer(*event, m_offer);
}

void DropTarget::dragLeaveEvent(QDragLeaveEvent *)
{
    setOffer(Offer::None);
}

void DropTarget::dropEvent(QDropEvent *event)
{
    const Offer offer = offerOf(*event);
    setOffer(Offer::None);
    answer(*event, offer);
    if (offer != Offer::None)
        Q_EMIT dropped(HandedOver::of(*event->mimeData(), order));
}

void DropTarget::setOffer(Offer offer)
{
    if (std::exchange(m_offer, offer) != offer)
        Q_EMIT offerChanged();
}

} // namespace morvane
