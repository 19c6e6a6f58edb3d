#include "services/EventReceipts.h"

#include "async/CancelledError.h"
#include "utils/text/UserPresentableError.h"

#include <algorithm>

namespace morvane {

EventReceipts::EventReceipts(CalendarStoring &calendars, QObject *parent)
    : QObject(parent)
    , m_calendars(calendars)
{}

void EventReceipts::keep(Receipt receipt)
{
    m_receipts.push_back(std::move(receipt));
    if (m_receipts.size() > most)
        m_receipts.erase(m_receipts.begin());
    Q_EMIT changed();
}

void EventReceipts::undo(const QUuid &id)
{
    Receipt *receipt = find(id);
    if (!receipt || receipt->isLeaving)
        return;
    receipt->isLeaving = true;
    receipt->problem.clear();
    const auto place = receipt->place;
    Q_EMIT changed();
    m_removals.remove_if([](const TaskHandle &removal) { return !removal.isRunning(); });
    m_removals.push_back(TaskHandle::start([this, id, place](std::stop_token stop) {
        return remove(QPointer(this), id, place, std::move(stop));
    }));
}

QCoro::Task<> EventReceipts::remove(QPointer<EventReceipts> self, QUuid id, CalendarStoring::Place place,
                                    std::stop_token stop)
{
    QString problem;
    try {
        co_await self->m_calendars.remove(place, stop);
    } catch (const CancelledError &) {
        co_return;
    } catch (...) {
        problem = presentationOf(std::current_exception()).message;
    }
    if (!self)
        co_return;
    Receipt *receipt = self->find(id);
    if (!receipt)
        co_return;
    if (problem.isEmpty()) {
        self->dismiss(id);
        co_return;
    }
    receipt->isLeaving = false;
    receipt->problem = problem;
    Q_EMIT self->changed();
}

void EventReceipts::dismiss(const QUuid &id)
{
    if (std::erase_if(m_receipts, [&](const Receipt &receipt) { return receipt.id == id; }) > 0)
        Q_EMIT changed();
}

EventReceipts::Receipt *EventReceipts::find(const QUuid &id)
{
    const auto found = std::ranges::find(m_receipts, id, &Receipt::id);
    return found == m_receipts.end() ? nullptr : &*found;
}

} // namespace morvane
