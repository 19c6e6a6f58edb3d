#include "ai/speech/WhisperRecognizer.h"

#include "ai/speech/WhisperLanguages.h"
#include "ai/speech/WhisperSetup.h"
#include "ai/speech/WhisperSound.h"
#include "ai/speech/WhisperUpload.h"
#include "async/Clock.h"
#include "audio/AudioError.h"

#include <QPointer>

namespace morvane {

using namespace std::chrono_literals;

namespace {

constexpr auto lookInterval = 50ms;
constexpr std::size_t newSound = AudioQueue::samplesIn(2); // that is worth another question: each is a row

// One speech, from the first word to the last.
class Listening {
public:
    struct Parts {
        QPointer<WhisperServer> server;
        Clock *clock = nullptr;
        WhisperServer::Program program;
        QString language;
        std::shared_ptr<SpeechRecognitionRequest> request;
        SpeechRecognizing::Handler handler;
    };

    explicit Listening(Parts parts)
        : m_parts(std::move(parts))
    {}

    static QCoro::Task<> run(std::shared_ptr<Listening> self, std::stop_token stop)
    {
        try {
            co_await pause(*self->m_parts.clock, lookInterval, stop);
            while (!self->m_isOver)
                co_await step(self, stop);
        } catch (const CancelledError &) {
        } catch (...) {
            self->m_parts.handler.error(std::current_exception());
        }
    }

private:
    static QCoro::Task<> step(std::shared_ptr<Listening> self, std::stop_token stop)
    {
        AudioQueue &queue = self->m_parts.request->audio;
        self->m_sound.take(queue);
        const std::size_t there = self->m_sound.samples().size();
        const bool isLast = queue.isAtEnd();
        if (!isLast && !self->m_sound.isFull() && there < self->m_asked + newSound) {
            co_await pause(*self->m_parts.clock, lookInterval, stop);
            co_return;
        }
        const bool isCut = !isLast && self->m_sound.isFull();
        const std::size_t count = isCut ? self->m_sound.quietestCut() : there;
        const QString words = co_await wordsOf(self, count, stop);
        self->tell(words, isLast);
        if (isCut)
            self->close(words, count);
        else
            self->m_asked = count;
        self->m_isOver = isLast;
    }

    static QCoro::Task<QString> wordsOf(std::shared_ptr<Listening> self, std::size_t count,
                                        std::stop_token stop)
    {
        if (count == 0 || !self->m_sound.isAudible())
            co_return QString();
        if (!self->m_parts.server)
            throw AudioError(AudioError::Case::recognitionFailed);
        QByteArray form = WhisperUpload::formOf(self->m_sound.samples().first(count), self->m_parts.language);
        const QString words =
            co_await self->m_parts.server->words(self->m_parts.program, std::move(form), stop);
        co_return words;
    }

    void tell(const QString &words, bool isFinal)
    {
        if (!isFinal && !m_parts.request->shouldReportPartialResults)
            return;
        m_parts.handler.result((m_ended + words).simplified(), isFinal);
    }

    void close(const QString &words, std::size_t count)
    {
        m_ended += words + QLatin1Char(' ');
        m_sound.drop(count);
        m_asked = 0;
    }

    const Parts m_parts;
    WhisperSound m_sound;
    std::size_t m_asked = 0; // of the sound
    QString m_ended;         // words of what was cut off
    bool m_isOver = false;
};

class WhisperTask final : public SpeechRecognizing::Task {
public:
    explicit WhisperTask(Listening::Parts parts)
        : m_listening(TaskHandle::start(
              [listening = std::make_shared<Listening>(std::move(parts))](std::stop_token stop) {
                  return Listening::run(listening, std::move(stop));
              }))
    {}

private:
    TaskHandle m_listening;
};

} // namespace

WhisperRecognizer::WhisperRecognizer(const WhisperSetup &setup, WhisperServer &server, Clock &clock)
    : m_setup(setup)
    , m_server(server)
    , m_clock(clock)
{}

bool WhisperRecognizer::isAvailable() const
{
    return m_setup.isReady();
}

bool WhisperRecognizer::supportsOnDeviceRecognition(const QLocale &locale) const
{
    return m_setup.knows(locale);
}

// The server starts with the first word, and not only when there is enough of it to ask.
std::unique_ptr<SpeechRecognizing::Task>
WhisperRecognizer::recognitionTask(std::shared_ptr<SpeechRecognitionRequest> request, Handler handler)
{
    Listening::Parts parts;
    parts.server = &m_server;
    parts.clock = &m_clock;
    parts.program = {m_setup.found().program, m_setup.found().modelPath};
    parts.language = WhisperLanguages::codeOf(request->locale).value_or(QString());
    parts.request = std::move(request);
    parts.handler = std::move(handler);
    m_server.warmUp(parts.program);
    return std::make_unique<WhisperTask>(std::move(parts));
}

} // namespace morvane
