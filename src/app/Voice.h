#pragma once

#include <functional>
#include <memory>

namespace morvane {

class AudioCapturing;
class AudioPermissionService;
class AudioPermitting;
class AudioPlaying;
class Clock;
class FliteSynthesizer;
class MicrophoneDevices;
class PocketSphinxRecognizer;
class SpeechEngines;
class SpeechRecognitionService;
class SystemVoices;
class TextToSpeechService;
class VoiceDebugLog;
class WhisperRecognizer;
class WhisperServer;
class WhisperSetup;
class Work;
struct Assistant;
struct Storage;

// What the desktop has for ears and a mouth. Null where it has none; all outlives what uses it.
struct VoicePorts {
    AudioPlaying *output = nullptr;
    MicrophoneDevices *microphones = nullptr;
    AudioPermitting *permission = nullptr;
    SystemVoices *systemVoices = nullptr;
    std::function<std::unique_ptr<AudioCapturing>()> makeEngine = {};
};

// What hears and reads aloud. What the constructor takes outlives this, and `work` ends before it does.
struct Voice {
    Voice(const VoicePorts &ports, Storage &storage, Assistant &assistant, Clock &clock, Work &work);
    ~Voice();

    const VoicePorts ports;
    const std::unique_ptr<AudioPlaying> noOutput; // fails, where there is none
    const std::unique_ptr<FliteSynthesizer> synthesizer;
    const std::unique_ptr<TextToSpeechService> tts;
    const std::unique_ptr<VoiceDebugLog> log;
    const std::unique_ptr<AudioPermissionService> permissions; // null without a microphone's ports
    const std::unique_ptr<PocketSphinxRecognizer> packaged;
    const std::unique_ptr<WhisperSetup> speechModel; // the person's own
    const std::unique_ptr<WhisperServer> speechServer;
    const std::unique_ptr<WhisperRecognizer> better;
    const std::unique_ptr<SpeechEngines> recognizer;        // both
    const std::unique_ptr<SpeechRecognitionService> speech; // null without permissions

private:
    [[nodiscard]] AudioPlaying &output() const;
    [[nodiscard]] std::unique_ptr<SpeechRecognitionService> makeSpeech(Storage &storage, Clock &clock);
};

} // namespace morvane
