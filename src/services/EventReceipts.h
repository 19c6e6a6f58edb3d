#pragma once

#include "async/TaskHandle.h"
#include "services/CalendarStoring.h"

#include <QObject>
#include <QPointer>
#include <QUuid>

#include <list>
#include <vector>

namespace morvane {

// Events that were added in this run, each until it is taken out again or waved away. Lives in memory only.
// GUI thread.
class EventReceipts final : public QObject {
    Q_OBJECT
public:
    static constexpr std::size_t most = 3;

    struct Receipt {
        QUuid id;
        QString title;
        QString when; // as it was told
        QString chat; // where it was asked for; empty for outside of chats
        CalendarStoring::Place place;
        bool isLeaving = false; // it is being taken out
        QString problem = {};   // why it could not be; empty for none
    };

    // `calendars` outlives this object.
    explicit EventReceipts(CalendarStoring &calendars, QObject *parent = nullptr);

    [[nodiscard]] const std::vector<Receipt> &receipts() const { return m_receipts; }

    void keep(Receipt receipt); // the oldest goes when there are too many

    // Takes the event out of its calendar. An id that is not there changes nothing, and so does one that is
    // leaving already.
    void undo(const QUuid &id);
    void dismiss(const QUuid &id);

Q_SIGNALS:
    void changed();

private:
    static QCoro::Task<> remove(QPointer<EventReceipts> self, QUuid id, CalendarStoring::Place place,
                                std::stop_token stop);
    [[nodiscard]] Receipt *find(const QUuid &id);

    CalendarStoring &m_calendars;
    std::vector<Receipt> m_receipts;
    std::list<TaskHandle> m_removals;
};

} // namespace morvane
