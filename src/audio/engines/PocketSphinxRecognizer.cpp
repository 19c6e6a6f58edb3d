#include "audio/engines/PocketSphinxRecognizer.h"

#include "async/TaskHandle.h"
#include "async/Work.h"
#include "audio/AudioError.h"
#include "audio/engines/SphinxDecoder.h"

#include <QFileInfo>

#include <openssl/crypto.h>

#include <array>
#include <mutex>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

struct PocketSphinxRecognizer::Shelf {
    std::mutex mutex;
    std::unique_ptr<SphinxDecoder> decoder; // guarded by mutex
};

namespace {

constexpr std::size_t samplesAtOnce = 1024;
constexpr auto timeOnTheShelf = 5min;

struct Heard {
    QString text;
    bool isFinal = false;
};

// Listens to the end of the request, telling what it hears whenever that changes.
void recognize(SphinxDecoder &decoder, SpeechRecognitionRequest &request, const Work::Report<Heard> &report,
               const std::stop_token &stop)
{
    std::array<std::int16_t, samplesAtOnce> samples{};
    QString told;
    decoder.begin();
    while (const std::size_t count = request.audio.readOrWait(samples, stop)) {
        decoder.take(std::span(samples).first(count));
        QString words = decoder.words();
        if (words != told && request.shouldReportPartialResults)
            report({words, false});
        told = std::move(words);
    }
    OPENSSL_cleanse(samples.data(), sizeof(samples));
    decoder.end();
    report({decoder.words(), true});
}

class SphinxTask final : public SpeechRecognizing::Task {
public:
    SphinxTask(Work::Results<Heard> results, SpeechRecognizing::Handler handler)
        : m_reading(TaskHandle::start(
              [results = std::make_shared<Work::Results<Heard>>(std::move(results)),
               handler = std::move(handler)](std::stop_token stop) { return read(results, handler, stop); }))
    {}

private:
    // Holds the results, so that the end of the task stops the worker.
    static QCoro::Task<> read(std::shared_ptr<Work::Results<Heard>> results,
                              SpeechRecognizing::Handler handler, std::stop_token stop)
    {
        try {
            while (const std::optional<Heard> heard = co_await results->next(stop))
                handler.result(heard->text, heard->isFinal);
        } catch (const CancelledError &) {
        } catch (...) {
            handler.error(std::current_exception());
        }
    }

    TaskHandle m_reading;
};

} // namespace

PocketSphinxRecognizer::PocketSphinxRecognizer(Clock &clock, Work &work, QString modelFolder)
    : m_clock(clock)
    , m_work(work)
    , m_modelFolder(std::move(modelFolder))
    , m_shelf(std::make_shared<Shelf>())
{}

PocketSphinxRecognizer::~PocketSphinxRecognizer() = default;

QString PocketSphinxRecognizer::packagedModel()
{
    return u"/usr/share/pocketsphinx/model/en-us"_s;
}

bool PocketSphinxRecognizer::isAvailable() const
{
    return QFileInfo::exists(m_modelFolder + u"/en-us/mdef"_s) &&
           QFileInfo::exists(m_modelFolder + u"/en-us.lm.bin"_s) &&
           QFileInfo::exists(m_modelFolder + u"/cmudict-en-us.dict"_s);
}

// A session without a language of its own is taken for English.
bool PocketSphinxRecognizer::supportsOnDeviceRecognition(const QLocale &locale) const
{
    return locale.language() == QLocale::English || locale.language() == QLocale::C;
}

// A decoder goes along with its session and comes back at the end of it: one that hangs or fails is not met
// again.
std::unique_ptr<SpeechRecognizing::Task>
PocketSphinxRecognizer::recognitionTask(std::shared_ptr<SpeechRecognitionRequest> request, Handler handler)
{
    auto results =
        m_work.start<Heard>([request = std::move(request), shelf = m_shelf, folder = m_modelFolder](
                                const Work::Report<Heard> &report, const std::stop_token &stop) {
            std::unique_ptr<SphinxDecoder> decoder;
            {
                const std::lock_guard lock(shelf->mutex);
                decoder = std::move(shelf->decoder);
            }
            if (!decoder)
                decoder = std::make_unique<SphinxDecoder>(folder);
            recognize(*decoder, *request, report, stop);
            const std::lock_guard lock(shelf->mutex);
            shelf->decoder = std::move(decoder);
        });
    tidyLater();
    return std::make_unique<SphinxTask>(std::move(results), std::move(handler));
}

void PocketSphinxRecognizer::tidyLater()
{
    m_tidying = m_clock.after(timeOnTheShelf + std::chrono::seconds(SpeechRecognitionRequest::mostSeconds),
                              [shelf = m_shelf] {
                                  const std::lock_guard lock(shelf->mutex);
                                  shelf->decoder.reset();
                              });
}

} // namespace morvane
