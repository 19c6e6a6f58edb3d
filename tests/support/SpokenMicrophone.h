#pragma once

#include "audio/AudioCapturing.h"
#include "audio/AudioPermitting.h"
#include "audio/AudioQueue.h"
#include "audio/engines/FliteSynthesizer.h"

#include <memory>
#include <vector>

namespace morvane {

// What a voice says, with what a person leaves before and behind it.
[[nodiscard]] inline std::vector<std::int16_t> spoken(const QString &words)
{
    std::vector<std::int16_t> sound(AudioQueue::sampleRate / 3);
    FliteSynthesizer().synthesize({words, QStringLiteral("cmu_us_slt"), 0},
                                  [&](std::span<const std::int16_t> more) {
                                      sound.insert(sound.end(), more.begin(), more.end());
                                      return true;
                                  });
    sound.resize(sound.size() + AudioQueue::sampleRate / 2);
    return sound;
}

// A microphone without a sound server: a test says what it hears, and when it opens.
class SpokenMicrophone final : public AudioPermitting {
public:
    [[nodiscard]] bool isOpen() const { return m_state->tap.sound != nullptr; }
    void hear(const std::vector<std::int16_t> &sound) const { m_state->tap.sound(sound); }
    [[nodiscard]] std::unique_ptr<AudioCapturing> makeEngine() const
    {
        return std::make_unique<Engine>(m_state);
    }

    [[nodiscard]] States states() const override
    {
        return {PermissionState::granted, PermissionState::granted};
    }
    QCoro::Task<PermissionState> requestMicrophone(std::stop_token) override
    {
        co_return PermissionState::granted;
    }
    QCoro::Task<PermissionState> requestSpeechRecognition(std::stop_token) override
    {
        co_return PermissionState::granted;
    }

private:
    struct State {
        AudioCapturing::Tap tap;
    };
    class Engine final : public AudioCapturing {
    public:
        explicit Engine(std::shared_ptr<State> state)
            : m_state(std::move(state))
        {}
        ~Engine() override { m_state->tap = {}; }
        QCoro::Task<Binding> bind(std::optional<QString>, std::stop_token) override
        {
            co_return Binding{true, 16'000};
        }
        QCoro::Task<> start(Tap tap, std::stop_token) override
        {
            m_state->tap = std::move(tap);
            co_return;
        }
        QCoro::Task<> stop(std::stop_token) override
        {
            m_state->tap = {};
            co_return;
        }

    private:
        std::shared_ptr<State> m_state;
    };

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace morvane
