#include "ai/speech/WhisperSound.h"

#include "audio/SoundLevel.h"

#include <openssl/crypto.h>

#include <algorithm>

namespace morvane {

namespace {

constexpr std::size_t moment = AudioQueue::sampleRate / 5;
constexpr float quietRoom = 0.15F; // of SoundLevel: 51 decibels below full scale

} // namespace

WhisperSound::WhisperSound()
{
    m_samples.reserve(most);
}

WhisperSound::~WhisperSound()
{
    drop(m_samples.size());
}

void WhisperSound::take(AudioQueue &queue)
{
    const std::size_t before = m_samples.size();
    m_samples.resize(most);
    m_samples.resize(before + queue.read(std::span(m_samples).subspan(before)));
}

bool WhisperSound::isAudible() const
{
    const std::span all(m_samples);
    for (std::size_t at = 0; at < all.size(); at += moment)
        if (SoundLevel::of(all.subspan(at, std::min(moment, all.size() - at))) > quietRoom)
            return true;
    return false;
}

std::size_t WhisperSound::quietestCut() const
{
    const std::span all(m_samples);
    std::size_t cut = all.size();
    float quietest = 2;
    for (std::size_t at = all.size() / 2; at + moment <= all.size(); at += moment / 2) {
        const float level = SoundLevel::of(all.subspan(at, moment));
        if (level >= quietest)
            continue;
        quietest = level;
        cut = at + moment / 2;
    }
    return cut;
}

void WhisperSound::drop(std::size_t count)
{
    const std::size_t left = m_samples.size() - count;
    std::copy(m_samples.begin() + static_cast<std::ptrdiff_t>(count), m_samples.end(), m_samples.begin());
    OPENSSL_cleanse(m_samples.data() + left, count * sizeof(std::int16_t));
    m_samples.resize(left);
}

} // namespace morvane
