#pragma once

#include "services/CalendarStoring.h"

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

class QTemporaryDir;

namespace morvane {

class Clock;
class Work;

// The calendars of Evolution Data Server. GUI thread.
class EvolutionCalendars final : public CalendarStoring {
public:
    // A service that is started by the question takes its time. One that takes longer doesn't answer.
    static constexpr std::chrono::seconds patience{20};

    // Event files go into folders of their own below `scratch`, and with this object. `zone` names the
    // person's time zone as the Olson database does. `clock` and `work` outlive this object.
    EvolutionCalendars(QString scratch, Clock &clock, Work &work, std::function<QByteArray()> zone);
    ~EvolutionCalendars() override;

    QCoro::Task<std::optional<std::vector<Calendar>>> calendars(std::stop_token stop) override;
    QCoro::Task<std::optional<Place>> add(Event event, std::optional<QString> calendarID,
                                          std::stop_token stop) override;
    QCoro::Task<> remove(Place place, std::stop_token stop) override;
    QString writeFile(const Event &event) override;

private:
    const QString m_scratch;
    Clock &m_clock;
    Work &m_work;
    const std::function<QByteArray()> m_zone;
    std::vector<std::unique_ptr<QTemporaryDir>> m_files;
};

} // namespace morvane
