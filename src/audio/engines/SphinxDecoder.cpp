#include "audio/engines/SphinxDecoder.h"

#include "audio/AudioError.h"
#include "audio/AudioQueue.h"

#include <openssl/crypto.h>
#include <pocketsphinx.h>
#include <sphinxbase/cmn.h>
#include <sphinxbase/feat.h>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Who never pauses is cut here: the last pass over an utterance grows with it.
constexpr std::size_t longestUtterance = AudioQueue::samplesIn(25);
// What of a voice is enough to know it by, and how much of what lies before it is kept with it.
constexpr std::size_t opening = AudioQueue::samplesIn(2);
constexpr std::size_t leastOpening = AudioQueue::samplesIn(1) / 2; // else it may be a door
constexpr std::size_t before = AudioQueue::samplesIn(1);
constexpr std::size_t mostOpening = 2 * (opening + before);

} // namespace

void SphinxDecoder::Free::operator()(ps_decoder_s *decoder) const
{
    ps_free(decoder);
}

SphinxDecoder::SphinxDecoder(const QString &modelFolder)
{
    const QByteArray folder = modelFolder.toLocal8Bit();
    cmd_ln_t *config =
        cmd_ln_init(nullptr, ps_args(), TRUE, "-hmm", (folder + "/en-us").constData(), "-lm",
                    (folder + "/en-us.lm.bin").constData(), "-dict",
                    (folder + "/cmudict-en-us.dict").constData(), "-logfn", "/dev/null", nullptr);
    if (config)
        m_decoder.reset(ps_init(config));
    cmd_ln_free_r(config); // the decoder has its own
    if (!m_decoder)
        throw AudioError(AudioError::Case::speechRecognizerUnavailable);
    m_opening.reserve(mostOpening);
}

SphinxDecoder::~SphinxDecoder()
{
    dropOpening(m_opening.size());
}

void SphinxDecoder::begin()
{
    m_ended.clear();
    dropOpening(m_opening.size());
    forgetVoice();
    ps_start_stream(m_decoder.get());
    beginUtterance();
}

void SphinxDecoder::take(std::span<const std::int16_t> samples)
{
    if (!m_knowsVoice)
        keepOpening(samples);
    hear(samples);
    const bool inSpeech = ps_get_in_speech(m_decoder.get());
    m_spoken = inSpeech ? m_spoken + samples.size() : 0;
    m_spokenInAll += inSpeech ? samples.size() : 0;
    if (!m_knowsVoice && m_spoken >= opening)
        return hearOpeningAgain();
    const bool hasPaused = std::exchange(m_inSpeech, inSpeech) && !inSpeech;
    if (!hasPaused && m_spoken < longestUtterance)
        return;
    endUtterance();
    beginUtterance();
}

void SphinxDecoder::end()
{
    endUtterance();
}

QString SphinxDecoder::words() const
{
    QStringList all = m_ended;
    if (const QString spoken = m_isOpen ? hypothesis() : QString(); !spoken.isEmpty())
        all.append(spoken);
    return all.join(u' ');
}

// The next speech may come by another microphone. What is known stays the guess until the end of an
// utterance.
void SphinxDecoder::forgetVoice()
{
    m_knowsVoice = false;
    cmn_t *const known = ps_get_feat(m_decoder.get())->cmn_struct;
    std::fill_n(known->sum, known->veclen, mfcc_t{});
    known->nframe = 0;
}

void SphinxDecoder::hear(std::span<const std::int16_t> samples)
{
    if (ps_process_raw(m_decoder.get(), samples.data(), samples.size(), FALSE, FALSE) < 0)
        throw AudioError(AudioError::Case::recognitionFailed);
}

void SphinxDecoder::keepOpening(std::span<const std::int16_t> samples)
{
    samples = samples.last(std::min(samples.size(), before));
    if (!m_inSpeech && m_opening.size() > before)
        dropOpening(m_opening.size() - before);
    if (m_opening.size() + samples.size() <= mostOpening)
        m_opening.insert(m_opening.end(), samples.begin(), samples.end());
}

void SphinxDecoder::dropOpening(std::size_t count)
{
    const std::size_t left = m_opening.size() - count;
    std::copy_n(m_opening.begin() + static_cast<std::ptrdiff_t>(count), left, m_opening.begin());
    OPENSSL_cleanse(m_opening.data() + left, count * sizeof(std::int16_t));
    m_opening.resize(left);
}

void SphinxDecoder::hearOpeningAgain()
{
    m_knowsVoice = true;
    closeUtterance();
    ps_start_stream(m_decoder.get());
    beginUtterance();
    hear(m_opening);
    m_inSpeech = ps_get_in_speech(m_decoder.get());
    m_spoken = m_inSpeech ? m_opening.size() : 0;
    dropOpening(m_opening.size());
}

void SphinxDecoder::beginUtterance()
{
    m_inSpeech = false;
    m_spoken = 0;
    m_spokenInAll = 0;
    m_isOpen = true;
    if (ps_start_utt(m_decoder.get()) < 0)
        throw AudioError(AudioError::Case::recognitionFailed);
}

void SphinxDecoder::closeUtterance()
{
    m_isOpen = false;
    if (ps_end_utt(m_decoder.get()) < 0)
        throw AudioError(AudioError::Case::recognitionFailed);
}

// A speech that is shorter than what a voice is known by is heard again at its end.
void SphinxDecoder::endUtterance()
{
    if (!m_knowsVoice && m_spokenInAll >= leastOpening)
        hearOpeningAgain();
    closeUtterance();
    if (const QString spoken = hypothesis(); !spoken.isEmpty())
        m_ended.append(spoken);
}

QString SphinxDecoder::hypothesis() const
{
    std::int32_t score = 0;
    return QString::fromUtf8(ps_get_hyp(m_decoder.get(), &score));
}

} // namespace morvane
