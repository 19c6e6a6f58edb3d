#include "audio/AudioPermissionService.h"

#include "utils/log/Log.h"

namespace morvane {

using namespace Qt::StringLiterals;

AudioPermissionService::AudioPermissionService(AudioPermitting &desktop)
    : m_desktop(desktop)
    , m_states(desktop.states())
{}

void AudioPermissionService::refresh()
{
    m_states = m_desktop.states();
}

QCoro::Task<> AudioPermissionService::requestMicrophone(std::stop_token stop)
{
    Log::info(Log::Category::Audio, "Requesting microphone permission"_L1);
    m_states.microphone = co_await m_desktop.requestMicrophone(stop);
    Log::info(Log::Category::Audio, "Microphone permission result: %{bool}d"_L1,
              {m_states.microphone == PermissionState::granted});
}

QCoro::Task<> AudioPermissionService::requestSpeechRecognition(std::stop_token stop)
{
    Log::info(Log::Category::Audio, "Requesting speech recognition permission"_L1);
    m_states.speechRecognition = co_await m_desktop.requestSpeechRecognition(stop);
    Log::info(Log::Category::Audio, "Speech recognition permission result: %ld"_L1,
              {static_cast<int>(m_states.speechRecognition)});
}

QCoro::Task<> AudioPermissionService::settle(std::stop_token stop)
{
    refresh();
    if (microphone() == PermissionState::notDetermined && !microphoneRestricted())
        co_await requestMicrophone(stop);
    if (speechRecognition() == PermissionState::notDetermined && !speechRecognitionRestricted())
        co_await requestSpeechRecognition(stop);
}

std::optional<AudioError> AudioPermissionService::refusal() const
{
    using Case = AudioError::Case;
    if (microphoneRestricted())
        return Case::microphoneRestricted;
    if (speechRecognitionRestricted())
        return Case::speechRecognitionRestricted;
    if (microphone() != PermissionState::granted)
        return Case::microphonePermissionDenied;
    if (speechRecognition() != PermissionState::granted)
        return Case::speechRecognitionPermissionDenied;
    return std::nullopt;
}

} // namespace morvane
