#include "app/Voice.h"

#include "ai/local/LocalMachine.h"
#include "ai/speech/WhisperRecognizer.h"
#include "ai/speech/WhisperSetup.h"
#include "app/Assistant.h"
#include "app/Storage.h"
#include "audio/AudioError.h"
#include "audio/AudioPermissionService.h"
#include "audio/AudioPlaying.h"
#include "audio/AudioQueue.h"
#include "audio/PopSound.h"
#include "audio/SpeechEngines.h"
#include "audio/SpeechRecognitionService.h"
#include "audio/TextToSpeechService.h"
#include "audio/VoiceDebugLog.h"
#include "audio/engines/FliteSynthesizer.h"
#include "audio/engines/PocketSphinxRecognizer.h"
#include "network/AppNetwork.h"
#include "persistence/SettingsStore.h"
#include "utils/text/Product.h"

#include <QCoreApplication>

#include <tuple>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class NoOutput final : public AudioPlaying {
public:
    [[nodiscard]] QCoro::Task<> play(std::shared_ptr<AudioQueue>, std::stop_token) override
    {
        throw AudioError(AudioError::Case::playbackFailed);
        co_return;
    }
};

void play(AudioPlaying &output, const std::vector<std::int16_t> &samples)
{
    const auto sound = std::make_shared<AudioQueue>(samples.size());
    sound->offer(samples);
    sound->finish();
    std::ignore =
        output.play(sound, std::stop_token()); // it runs on; without a loudspeaker nothing is missed
}

QString logPath(const Storage &storage)
{
    return storage.folders.data + u'/' + Product::serviceName + u"/voice-debug.log"_s;
}

// Installed beside the program itself.
QString guard()
{
    return QCoreApplication::applicationDirPath() + u"/morvane-runtime-guard"_s;
}

} // namespace

Voice::Voice(const VoicePorts &given, Storage &storage, Assistant &assistant, Clock &clock, Work &work)
    : ports(given)
    , noOutput(std::make_unique<NoOutput>())
    , synthesizer(std::make_unique<FliteSynthesizer>())
    , tts(std::make_unique<TextToSpeechService>(*synthesizer, output(), work, ports.systemVoices))
    , log(std::make_unique<VoiceDebugLog>(logPath(storage), clock, work))
    , permissions(ports.permission ? std::make_unique<AudioPermissionService>(*ports.permission) : nullptr)
    , packaged(std::make_unique<PocketSphinxRecognizer>(clock, work))
    , speechModel(std::make_unique<WhisperSetup>(*storage.settings, work))
    , speechServer(std::make_unique<WhisperServer>(WhisperServer::Parts{.network = *assistant.network,
                                                                        .machine = *assistant.machine,
                                                                        .clock = clock,
                                                                        .work = work,
                                                                        .guard = guard()}))
    , better(std::make_unique<WhisperRecognizer>(*speechModel, *speechServer, clock))
    , recognizer(
          std::make_unique<SpeechEngines>(std::vector<SpeechRecognizing *>{better.get(), packaged.get()}))
    , speech(makeSpeech(storage, clock))
{}

Voice::~Voice() = default;

AudioPlaying &Voice::output() const
{
    return ports.output ? *ports.output : *noOutput;
}

std::unique_ptr<SpeechRecognitionService> Voice::makeSpeech(Storage &storage, Clock &clock)
{
    if (!permissions || !ports.makeEngine)
        return nullptr;
    return std::make_unique<SpeechRecognitionService>(SpeechRecognitionService::Services{
        .permissions = *permissions,
        .recognizer = *recognizer,
        .clock = clock,
        .log = *log,
        .makeEngine = ports.makeEngine,
        .preferredDeviceUID = [&settings = *storage.settings] { return settings.microphoneUID(); },
        .playPop = [this] { play(output(), PopSound::samples()); }});
}

} // namespace morvane
