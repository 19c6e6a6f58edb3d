#include "ai/providers/LineSplitter.h"

#include "ai/contract/ProviderError.h"

#include <utility>

namespace morvane {

void LineSplitter::add(QByteArray piece)
{
    m_piece = std::move(piece);
    m_at = 0;
    m_nextLineFeed = -1;
}

std::optional<QByteArrayView> LineSplitter::next()
{
    if (std::exchange(m_carriedIsHandedOut, false))
        m_carried.clear();
    if (m_at < m_piece.size() && std::exchange(m_skipsLineFeed, false) && m_piece.at(m_at) == '\n')
        ++m_at;
    const qsizetype end = lineEnd();
    const qsizetype stop = end < 0 ? m_piece.size() : end;
    const QByteArrayView bytes = QByteArrayView(m_piece).sliced(m_at, stop - m_at);
    if (m_carried.size() + bytes.size() > m_longestLine)
        throw ProviderError(ProviderError::Plain::replyTooLarge);
    m_at = stop;
    if (end < 0) {
        m_carried.append(bytes);
        return std::nullopt;
    }
    m_skipsLineFeed = m_piece.at(end) == '\r';
    ++m_at;
    if (m_carried.isEmpty())
        return bytes;
    m_carried.append(bytes);
    m_carriedIsHandedOut = true;
    return m_carried;
}

std::optional<QByteArrayView> LineSplitter::last() const
{
    if (m_carried.isEmpty() || m_carriedIsHandedOut)
        return std::nullopt;
    return m_carried;
}

// Two searches by memchr beat one loop over the bytes. The line feed is remembered, so a piece full of lone
// carriage returns is not searched through for each of them.
qsizetype LineSplitter::lineEnd()
{
    if (m_nextLineFeed < m_at) {
        const qsizetype found = m_piece.indexOf('\n', m_at);
        m_nextLineFeed = found < 0 ? m_piece.size() : found;
    }
    const QByteArrayView line = QByteArrayView(m_piece).sliced(m_at, m_nextLineFeed - m_at);
    const qsizetype carriageReturn = line.indexOf('\r');
    if (carriageReturn >= 0)
        return m_at + carriageReturn;
    return m_nextLineFeed < m_piece.size() ? m_nextLineFeed : -1;
}

} // namespace morvane
