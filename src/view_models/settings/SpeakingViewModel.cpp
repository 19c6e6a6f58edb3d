#include "view_models/settings/SpeakingViewModel.h"

#include "audio/AudioError.h"
#include "audio/TextToSpeechService.h"
#include "persistence/SettingsStore.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

SpeakingViewModel::SpeakingViewModel(SettingsStore &settings, TextToSpeechService &speech, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_speech(speech)
{
    connect(&settings, &SettingsStore::voiceIdentifierChanged, this, &SpeakingViewModel::changed);
}

QStringList SpeakingViewModel::voices() const
{
    QStringList names;
    for (const auto &voice : m_voices)
        names.append(voice.name);
    return names;
}

int SpeakingViewModel::voice() const
{
    const auto chosen = std::ranges::find(m_voices, m_settings.voiceIdentifier().value_or(QString()),
                                          &SpeechSynthesizing::Voice::identifier);
    return chosen == m_voices.end() ? 0 : static_cast<int>(chosen - m_voices.begin());
}

void SpeakingViewModel::setVoice(int index)
{
    if (index < 0 || index >= static_cast<int>(m_voices.size()))
        return;
    m_settings.setVoiceIdentifier(m_voices[static_cast<std::size_t>(index)].identifier);
}

void SpeakingViewModel::refresh()
{
    m_asking = TaskHandle::start(
        [self = QPointer(this)](std::stop_token stop) { return ask(self, std::move(stop)); });
}

QCoro::Task<> SpeakingViewModel::ask(QPointer<SpeakingViewModel> self, std::stop_token stop)
{
    using Asking = TextToSpeechService::Asking;
    const Asking asking = self->m_isAskedForMore ? Asking::All : Asking::Own;
    std::optional<QString> chosen = self->m_settings.voiceIdentifier();
    const auto voices = co_await self->m_speech.voices(std::move(chosen), asking, stop);
    if (!self || stop.stop_requested())
        co_return;
    self->m_voices = voices;
    Q_EMIT self->changed();
}

bool SpeakingViewModel::hasMore() const
{
    return m_speech.hasOthers() && !m_isAskedForMore;
}

void SpeakingViewModel::showMore()
{
    m_isAskedForMore = true;
    refresh();
    Q_EMIT changed();
}

void SpeakingViewModel::listen()
{
    if (isListening())
        return stop();
    m_message.clear();
    m_listening = TaskHandle::start(
        [self = QPointer(this)](std::stop_token stop) { return speak(self, std::move(stop)); });
    Q_EMIT changed();
}

void SpeakingViewModel::stop()
{
    m_listening = {};
    Q_EMIT changed();
}

QCoro::Task<> SpeakingViewModel::speak(QPointer<SpeakingViewModel> self, std::stop_token stop)
{
    QString failure;
    try {
        QString sentence = u"This is how your replies will sound."_s;
        std::optional<QString> voice = self->m_settings.voiceIdentifier();
        co_await self->m_speech.speak(std::move(sentence), std::move(voice), self->m_settings.speakingRate(),
                                      false, stop);
    } catch (const AudioError &error) {
        failure = error.userMessage() + u' ' + error.recoverySuggestion().value_or(QString());
    }
    if (!self || stop.stop_requested())
        co_return;
    self->m_message = failure;
    self->stop();
}

} // namespace morvane
