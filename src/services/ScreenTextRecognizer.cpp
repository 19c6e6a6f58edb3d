#include "services/ScreenTextRecognizer.h"

#include "async/CancelledError.h"
#include "async/Work.h"
#include "services/ScreenReadingProcess.h"

namespace morvane {

ScreenTextRecognizer::ScreenTextRecognizer(Work &work, Clock &clock, QString program, QStringList languages)
    : m_work(work)
    , m_clock(clock)
    , m_program(std::move(program))
    , m_languages(std::move(languages))
{}

QCoro::Task<std::vector<TextObservation>>
ScreenTextRecognizer::recognize(std::shared_ptr<const ScreenPicture> picture, std::stop_token stop)
{
    using Observations = std::vector<TextObservation>;
    const ScreenReadingProcess::Request request{m_program, m_languages};
    const auto holder = std::make_shared<std::shared_ptr<const ScreenPicture>>(std::move(picture));
    // The picture goes with the work, not with whoever still holds the function that did it.
    const std::function<Observations(std::stop_token)> reading = [request, holder](std::stop_token stopped) {
        const auto held = std::exchange(*holder, nullptr);
        return ScreenReadingProcess::run(request, *held, stopped);
    };
    std::stop_source ending; // by the caller or by the time
    const std::stop_callback forwarded(stop, [ending]() mutable { ending.request_stop(); });
    const auto alarm = m_clock.after(longestRun, [ending]() mutable { ending.request_stop(); });
    try {
        const auto token = ending.get_token();
        Observations observations = co_await m_work.run(reading, token);
        co_return observations;
    } catch (const CancelledError &) {
        const bool isTimeUp = ending.stop_requested() && !stop.stop_requested();
        if (!isTimeUp)
            throw;
    }
    throw std::runtime_error("it took too long");
}

} // namespace morvane
