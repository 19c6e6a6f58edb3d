#include "platform/linux/AudioInput.h"

#include "audio/AudioError.h"
#include "platform/linux/AudioThread.h"
#include "platform/linux/CapturedSound.h"

namespace morvane {

void AudioInput::Release::operator()(CapturedSound *sound) const
{
    sound->deleteLater();
}

AudioInput::AudioInput(AudioThread &thread)
    : m_thread(thread)
    , m_sound(thread.adopt(std::make_unique<CapturedSound>()))
{
    connect(m_sound.get(), &CapturedSound::lost, this, [this] {
        if (m_lost)
            m_lost();
    });
}

AudioInput::~AudioInput() = default;

QCoro::Task<AudioCapturing::Binding> AudioInput::bind(std::optional<QString> deviceUID, std::stop_token stop)
{
    auto binding = m_thread.ask<std::optional<Binding>>(
        [sound = m_sound.get(), uid = std::move(deviceUID)] { return sound->bind(uid); }, std::move(stop));
    const std::optional<Binding> bound = co_await std::move(binding);
    if (!bound)
        throw AudioError(AudioError::Case::noMicrophone);
    co_return *bound;
}

QCoro::Task<> AudioInput::start(Tap tap, std::stop_token stop)
{
    m_lost = std::move(tap.lost);
    auto opening = m_thread.ask<bool>(
        [sound = m_sound.get(), taken = std::move(tap.sound)] { return sound->start(taken); },
        std::move(stop));
    const bool isOpen = co_await std::move(opening);
    if (!isOpen)
        throw AudioError(AudioError::Case::captureFailed);
}

QCoro::Task<> AudioInput::stop(std::stop_token stop)
{
    m_lost = {};
    auto closing = m_thread.ask<bool>(
        [sound = m_sound.get()] {
            sound->stop();
            return true;
        },
        std::move(stop));
    co_await std::move(closing);
}

} // namespace morvane
