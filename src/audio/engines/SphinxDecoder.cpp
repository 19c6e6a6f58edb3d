#include "audio/engines/SphinxDecoder.h"

#include "audio/AudioError.h"
#include "audio/AudioQueue.h"

#include <pocketsphinx.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Who never pauses is cut here: the last pass over an utterance grows with it.
constexpr std::size_t longestUtterance = AudioQueue::samplesIn(25);

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
}

void SphinxDecoder::begin()
{
    m_ended.clear();
    ps_start_stream(m_decoder.get());
    beginUtterance();
}

void SphinxDecoder::take(std::span<const std::int16_t> samples)
{
    if (ps_process_raw(m_decoder.get(), samples.data(), samples.size(), FALSE, FALSE) < 0)
        throw AudioError(AudioError::Case::recognitionFailed);
    const bool inSpeech = ps_get_in_speech(m_decoder.get());
    m_spoken = inSpeech ? m_spoken + samples.size() : 0;
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

void SphinxDecoder::beginUtterance()
{
    m_inSpeech = false;
    m_spoken = 0;
    m_isOpen = true;
    if (ps_start_utt(m_decoder.get()) < 0)
        throw AudioError(AudioError::Case::recognitionFailed);
}

void SphinxDecoder::endUtterance()
{
    m_isOpen = false;
    if (ps_end_utt(m_decoder.get()) < 0)
        throw AudioError(AudioError::Case::recognitionFailed);
    if (const QString spoken = hypothesis(); !spoken.isEmpty())
        m_ended.append(spoken);
}

QString SphinxDecoder::hypothesis() const
{
    std::int32_t score = 0;
    return QString::fromUtf8(ps_get_hyp(m_decoder.get(), &score));
}

} // namespace morvane
