#include "audio/TextToSpeechService.h"

#include "async/Work.h"
#include "audio/AudioPlaying.h"
#include "audio/AudioQueue.h"
#include "audio/SpeechSentences.h"
#include "audio/SystemVoices.h"
#include "markdown/SpeechText.h"
#include "utils/log/Log.h"
#include "utils/text/Text.h"

#include <algorithm>
#include <cmath>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// How far the sound may run ahead of what is heard: a slow moment of the machine is not heard, and of a long
// reply only this much is held.
constexpr std::size_t secondsAhead = 20;

struct FirstSound {};

struct Cleaned {
    QString text;
    qsizetype characters = 0;
};

Cleaned cleaned(const QString &text, MarkdownRenderer::CodeInSpeech code)
{
    const QString words = SpeechText::clean(text, code);
    return {words, Text::characterCount(words)};
}

// Where the voice begins: each draws breath first, for which nobody waits who has pressed a button.
std::size_t firstVoiced(std::span<const std::int16_t> samples)
{
    constexpr int breath = 200; // of 32,767
    const auto voiced = std::ranges::find_if(samples, [](int sample) { return std::abs(sample) > breath; });
    return static_cast<std::size_t>(voiced - samples.begin());
}

void synthesizeInto(AudioQueue &sound, SpeechSynthesizing &synthesizer,
                    SpeechSynthesizing::Utterance utterance, const Work::Report<FirstSound> &report,
                    const std::stop_token &stop)
{
    bool told = false;
    const auto sink = [&](std::span<const std::int16_t> samples) {
        if (!told)
            samples = samples.subspan(firstVoiced(samples));
        if (samples.empty())
            return !stop.stop_requested();
        const bool goesOn = sound.write(samples, stop);
        if (!std::exchange(told, true))
            report({});
        return goesOn;
    };
    const QString text = std::exchange(utterance.text, QString());
    SpeechSentences sentences(text);
    for (QStringView piece = sentences.next(); !piece.isEmpty() && !stop.stop_requested();
         piece = sentences.next()) {
        utterance.text = piece.toString();
        synthesizer.synthesize(utterance, sink);
    }
}

} // namespace

TextToSpeechService::TextToSpeechService(SpeechSynthesizing &synthesizer, AudioPlaying &output, Work &work,
                                         SystemVoices *others, QObject *parent)
    : QObject(parent)
    , m_synthesizer(synthesizer)
    , m_output(output)
    , m_work(work)
    , m_others(others)
{}

TextToSpeechService::~TextToSpeechService()
{
    m_stop.request_stop();
}

QCoro::Task<> TextToSpeechService::speak(QString text, std::optional<QString> voiceIdentifier, double rate,
                                         bool speakCodeBlocks, std::stop_token stop)
{
    this->stop();
    m_stop = std::stop_source();
    const double slowest = m_synthesizer.minimumRate();
    const double share = std::isfinite(rate) ? std::clamp(rate, 0.0, 1.0) : 0.5;
    SpeechSynthesizing::Utterance utterance{.text = std::move(text),
                                            .voice = voiceIdentifier.value_or(QString()),
                                            .rate =
                                                slowest + (m_synthesizer.maximumRate() - slowest) * share};
    return run(QPointer(this), std::move(utterance), share, speakCodeBlocks, m_stop, std::move(stop));
}

void TextToSpeechService::stop()
{
    m_stop.request_stop();
    setSpeaking(false);
}

QCoro::Task<> TextToSpeechService::run(QPointer<TextToSpeechService> self,
                                       SpeechSynthesizing::Utterance utterance, double share,
                                       bool speakCodeBlocks, std::stop_source stop,
                                       std::stop_token callersStop)
{
    const std::stop_callback passOn(callersStop, [stop]() mutable { stop.request_stop(); });
    try {
        const auto code = speakCodeBlocks ? MarkdownRenderer::CodeInSpeech::read
                                          : MarkdownRenderer::CodeInSpeech::announced;
        auto cleaning = self->m_work.run(
            [text = std::move(utterance.text), code] { return cleaned(text, code); }, stop.get_token());
        const Cleaned words = co_await std::move(cleaning);
        if (!self || words.text.isEmpty())
            co_return;
        utterance.text = words.text;
        self->setSpeaking(true);
        Log::info(Log::Category::Audio, "Speaking response (%ld characters)"_L1, {words.characters});
        const bool isSaid = co_await saidElsewhere(self, utterance, 2 * share - 1, stop.get_token());
        if (self && !isSaid)
            co_await sound(self, std::move(utterance), stop.get_token());
    } catch (const CancelledError &) {
        // It was stopped: what follows is the end, as after the last word.
    } catch (...) {
        if (self)
            self->ended(stop);
        throw;
    }
    if (self)
        self->ended(stop);
}

// By a voice that makes its own sound. A removed one leaves the text to the others.
QCoro::Task<bool> TextToSpeechService::saidElsewhere(QPointer<TextToSpeechService> self,
                                                     SpeechSynthesizing::Utterance utterance, double rate,
                                                     std::stop_token stop)
{
    if (!self->m_others || !self->m_others->owns(utterance.voice))
        co_return false;
    utterance.rate = rate;
    std::function<bool(std::stop_token)> saying =
        [others = self->m_others, utterance = std::move(utterance)](const std::stop_token &stopped) {
            return others->speak(utterance, stopped);
        };
    const bool isSaid = co_await self->m_work.run(std::move(saying), stop);
    co_return isSaid;
}

QCoro::Task<> TextToSpeechService::sound(QPointer<TextToSpeechService> self,
                                         SpeechSynthesizing::Utterance utterance, std::stop_token stop)
{
    const auto sound = std::make_shared<AudioQueue>(AudioQueue::samplesIn(secondsAhead));
    auto synthesis = self->m_work.start<FirstSound>(
        [sound, &synthesizer = self->m_synthesizer, utterance = std::move(utterance)](
            const Work::Report<FirstSound> &report, const std::stop_token &stopped) {
            try {
                synthesizeInto(*sound, synthesizer, utterance, report, stopped);
            } catch (...) {
                sound->finish();
                throw;
            }
            sound->finish();
        });
    const std::optional<FirstSound> first = co_await synthesis.next(stop);
    if (!first || !self)
        co_return; // no word of it can be said
    co_await self->m_output.play(sound, stop);
}

QCoro::Task<std::vector<SpeechSynthesizing::Voice>>
TextToSpeechService::voices(std::optional<QString> chosen, Asking asking, std::stop_token stop)
{
    const bool asksOthers = m_others && (asking == Asking::All || m_others->owns(chosen.value_or(QString())));
    return m_work.run(
        [&synthesizer = m_synthesizer, others = asksOthers ? m_others : nullptr] {
            auto all = synthesizer.voices();
            if (others)
                std::ranges::move(others->voices(), std::back_inserter(all));
            return all;
        },
        std::move(stop));
}

void TextToSpeechService::ended(const std::stop_source &utterance)
{
    if (m_stop == utterance)
        setSpeaking(false);
}

void TextToSpeechService::setSpeaking(bool speaking)
{
    if (std::exchange(m_isSpeaking, speaking) != speaking)
        Q_EMIT isSpeakingChanged();
}

} // namespace morvane
