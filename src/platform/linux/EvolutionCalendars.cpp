#include "platform/linux/EvolutionCalendars.h"

#include "async/Clock.h"
#include "async/Work.h"
#include "platform/linux/EventComponent.h"
#include "platform/linux/EvolutionService.h"
#include "services/DesktopActionError.h"
#include "utils/files/PrivateFile.h"

#include <QTemporaryDir>

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = DesktopActionError::Plain;

namespace {

// Triggered by the clock, or with the program's end.
class Deadline {
public:
    explicit Deadline(Clock &clock)
        : m_alarm(clock.after(EvolutionCalendars::patience,
                              [source = m_source]() mutable { source.request_stop(); }))
    {}

    [[nodiscard]] std::stop_source source() const { return m_source; }

private:
    std::stop_source m_source;
    std::unique_ptr<Alarm> m_alarm;
};

// `question` with the patience that is left for it, on the thread that it waits on.
template <typename Question>
auto patient(Question question, std::stop_source deadline, std::stop_token stop)
{
    return [question, deadline, stop](const std::stop_token &ending) {
        const std::stop_callback onEnd(ending, [deadline]() mutable { deadline.request_stop(); });
        return question(EvolutionService::Patience{stop, deadline.get_token()});
    };
}

} // namespace

EvolutionCalendars::EvolutionCalendars(QString scratch, Clock &clock, Work &work,
                                       std::function<QByteArray()> zone)
    : m_scratch(std::move(scratch))
    , m_clock(clock)
    , m_work(work)
    , m_zone(std::move(zone))
{}

EvolutionCalendars::~EvolutionCalendars() = default;

QCoro::Task<std::optional<std::vector<CalendarStoring::Calendar>>>
EvolutionCalendars::calendars(std::stop_token stop)
{
    const Deadline deadline(m_clock);
    const auto question = patient([](const auto &patience) { return EvolutionService::calendars(patience); },
                                  deadline.source(), stop);
    auto calendars = co_await m_work.run(question, stop);
    co_return std::optional<std::vector<Calendar>>(std::move(calendars));
}

// Without the token for `run`: whether the event was added is waited for.
QCoro::Task<std::optional<CalendarStoring::Place>>
EvolutionCalendars::add(Event event, std::optional<QString> calendarID, std::stop_token stop)
{
    const Deadline deadline(m_clock);
    const auto question = patient(
        [event, calendarID, zone = m_zone()](const auto &patience) {
            return EvolutionService::add(event, zone, calendarID, patience);
        },
        deadline.source(), stop);
    std::optional<Place> place = co_await m_work.run(question);
    co_return std::optional<Place>(std::move(place));
}

QCoro::Task<> EvolutionCalendars::remove(Place place, std::stop_token stop)
{
    const Deadline deadline(m_clock);
    const auto question =
        patient([place](const auto &patience) { EvolutionService::remove(place, patience); },
                deadline.source(), stop);
    co_await m_work.run(question, stop);
}

QString EvolutionCalendars::writeFile(const Event &event)
{
    try {
        PrivateFile::createFolder(m_scratch);
        auto folder = std::make_unique<QTemporaryDir>(m_scratch + u"/morvane-event-XXXXXX"_s);
        if (!folder->isValid())
            throw DesktopActionError(Plain::calendarSaveFailed);
        const QString path = folder->filePath(u"event.ics"_s);
        PrivateFile::write(path, EventComponent::file(event, EventComponent::zone(m_zone())));
        m_files.push_back(std::move(folder));
        return path;
    } catch (const FileError &) {
        throw DesktopActionError(Plain::calendarSaveFailed);
    }
}

} // namespace morvane
