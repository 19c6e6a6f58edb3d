#include "audio/engines/FliteSynthesizer.h"

#include "audio/AudioError.h"
#include "audio/AudioQueue.h"
#include "audio/engines/PlainEnglish.h"

#include <QLibrary>

#include <flite/flite.h>

#include <array>
#include <cmath>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

struct KnownVoice {
    QLatin1StringView identifier; // of the library as well
    QLatin1StringView name;
};

constexpr std::array knownVoices{
    KnownVoice{"cmu_us_slt"_L1, "Slt, American English, a woman"_L1},
    KnownVoice{"cmu_us_rms"_L1, "Rms, American English, a man"_L1},
    KnownVoice{"cmu_us_awb"_L1, "Awb, Scottish English, a man"_L1},
};
constexpr int libraryVersion = 1;

// Called as each stretch of the sound is ready.
int passOn(const cst_wave *wave, int start, int size, int, cst_audio_streaming_info *info)
{
    const auto &sink = *static_cast<const SpeechSynthesizing::Sink *>(info->userdata);
    const bool isOurs = wave->sample_rate == AudioQueue::sampleRate && wave->num_channels == 1;
    const std::span samples(wave->samples + start, static_cast<std::size_t>(std::max(0, size)));
    return isOurs && sink(samples) ? CST_AUDIO_STREAM_CONT : CST_AUDIO_STREAM_STOP;
}

} // namespace

std::vector<SpeechSynthesizing::Voice> FliteSynthesizer::voices()
{
    const std::lock_guard lock(m_mutex);
    std::vector<Voice> all;
    for (const KnownVoice &known : knownVoices) {
        if (voiceNamed(known.identifier))
            all.push_back({known.identifier, known.name});
    }
    return all;
}

void FliteSynthesizer::synthesize(const Utterance &utterance, const Sink &sink)
{
    const QByteArray words = PlainEnglish::of(utterance.text);
    if (words.isEmpty())
        return;
    const std::lock_guard lock(m_mutex);
    cst_voice *voice = voiceNamed(utterance.voice);
    for (const KnownVoice &known : knownVoices)
        voice = voice ? voice : voiceNamed(known.identifier);
    if (!voice)
        throw AudioError(AudioError::Case::playbackFailed);

    cst_audio_streaming_info *info = new_audio_streaming_info();
    info->asc = passOn;
    info->userdata = const_cast<Sink *>(&sink);
    feat_set(voice->features, "streaming_info", audio_streaming_info_val(info)); // which frees the former one
    feat_set_float(voice->features, "duration_stretch", static_cast<float>(std::exp2(-utterance.rate)));
    if (cst_wave *wave = flite_text_to_wave(words.constData(), voice))
        delete_wave(wave);
}

cst_voice *FliteSynthesizer::voiceNamed(const QString &identifier)
{
    const auto known = std::ranges::find(knownVoices, identifier, &KnownVoice::identifier);
    if (known == knownVoices.end())
        return nullptr;
    if (!m_voices.contains(identifier))
        m_voices.insert(identifier, load(identifier));
    return m_voices.value(identifier);
}

cst_voice *FliteSynthesizer::load(const QString &identifier)
{
    if (m_voices.isEmpty())
        flite_init();
    QLibrary library(u"flite_"_s + identifier, libraryVersion);
    using Register = cst_voice *(*)(const char *);
    const auto makeVoice =
        reinterpret_cast<Register>(library.resolve(("register_" + identifier.toLatin1()).constData()));
    return makeVoice ? makeVoice(nullptr) : nullptr;
}

} // namespace morvane
