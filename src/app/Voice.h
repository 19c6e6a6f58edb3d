#pragma once

#include <memory>

namespace morvane {

class AudioPlaying;
class FliteSynthesizer;
class TextToSpeechService;
class Work;

// What the desktop has for ears and a mouth. Null where it has none; all outlives what uses it.
struct VoicePorts {
    AudioPlaying *output = nullptr;
};

// What reads aloud. What the constructor takes outlives this, and `work` ends before it does.
struct Voice {
    Voice(const VoicePorts &ports, Work &work);
    ~Voice();

    const bool hasOutput;
    const std::unique_ptr<AudioPlaying> noOutput; // fails, where there is none
    const std::unique_ptr<FliteSynthesizer> synthesizer;
    const std::unique_ptr<TextToSpeechService> tts;
};

} // namespace morvane
