#include "audio/AudioQueue.h"

#include <openssl/crypto.h>

#include <algorithm>

namespace morvane {

// Not filled with zeros: memory that no sound reaches is never touched.
AudioQueue::AudioQueue(std::size_t mostSamples)
    : m_size(mostSamples)
    , m_ring(new std::int16_t[mostSamples])
{}

AudioQueue::~AudioQueue()
{
    const std::size_t toTheEnd = std::min(m_count, m_size - m_first);
    OPENSSL_cleanse(&m_ring[m_first], toTheEnd * sizeof(std::int16_t));
    OPENSSL_cleanse(&m_ring[0], (m_count - toTheEnd) * sizeof(std::int16_t));
}

bool AudioQueue::write(std::span<const std::int16_t> samples, const std::stop_token &stop)
{
    std::unique_lock lock(m_mutex);
    while (!samples.empty()) {
        if (!m_changed.wait(lock, stop, [this] { return m_count < m_size; }) || stop.stop_requested())
            return false;
        samples = samples.subspan(put(samples));
        m_changed.notify_all();
    }
    return !stop.stop_requested();
}

std::size_t AudioQueue::offer(std::span<const std::int16_t> samples)
{
    const std::lock_guard lock(m_mutex);
    const std::size_t added = m_finished ? 0 : put(samples);
    m_changed.notify_all();
    return added;
}

void AudioQueue::finish()
{
    const std::lock_guard lock(m_mutex);
    m_finished = true;
    m_changed.notify_all();
}

bool AudioQueue::isAtEnd() const
{
    const std::lock_guard lock(m_mutex);
    return m_finished && m_count == 0;
}

std::size_t AudioQueue::read(std::span<std::int16_t> samples)
{
    const std::lock_guard lock(m_mutex);
    return take(samples);
}

std::size_t AudioQueue::readOrWait(std::span<std::int16_t> samples, const std::stop_token &stop)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, stop, [this] { return m_count > 0 || m_finished; });
    return stop.stop_requested() ? 0 : take(samples);
}

std::size_t AudioQueue::put(std::span<const std::int16_t> samples)
{
    const std::size_t added = std::min(samples.size(), m_size - m_count);
    for (samples = samples.first(added); !samples.empty();) {
        const std::size_t at = (m_first + m_count) % m_size;
        const std::size_t piece = std::min(samples.size(), m_size - at);
        std::copy_n(samples.begin(), piece, &m_ring[at]);
        samples = samples.subspan(piece);
        m_count += piece;
    }
    return added;
}

std::size_t AudioQueue::take(std::span<std::int16_t> samples)
{
    const std::size_t taken = std::min(samples.size(), m_count);
    for (samples = samples.first(taken); !samples.empty();) {
        const std::size_t piece = std::min(samples.size(), m_size - m_first);
        std::copy_n(&m_ring[m_first], piece, samples.begin());
        OPENSSL_cleanse(&m_ring[m_first], piece * sizeof(std::int16_t));
        samples = samples.subspan(piece);
        m_first = (m_first + piece) % m_size;
        m_count -= piece;
    }
    m_changed.notify_all();
    return taken;
}

} // namespace morvane
