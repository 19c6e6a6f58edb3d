#include "app/Voice.h"

#include "audio/AudioError.h"
#include "audio/AudioPlaying.h"
#include "audio/TextToSpeechService.h"
#include "audio/engines/FliteSynthesizer.h"

namespace morvane {

namespace {

class NoOutput final : public AudioPlaying {
public:
    [[nodiscard]] QCoro::Task<> play(std::shared_ptr<AudioQueue>, std::stop_token) override
    {
        throw AudioError(AudioError::Case::playbackFailed);
        co_return;
    }
};

} // namespace

Voice::Voice(const VoicePorts &ports, Work &work)
    : hasOutput(ports.output)
    , noOutput(std::make_unique<NoOutput>())
    , synthesizer(std::make_unique<FliteSynthesizer>())
    , tts(std::make_unique<TextToSpeechService>(*synthesizer, hasOutput ? *ports.output : *noOutput, work))
{}

Voice::~Voice() = default;

} // namespace morvane
