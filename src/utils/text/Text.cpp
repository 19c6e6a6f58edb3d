#include "utils/text/Text.h"

#include <QStringDecoder>
#include <QTextBoundaryFinder>

#include <algorithm>

namespace morvane {

namespace {

// In ASCII every unit is a character of its own, but for CR LF, which counts as one.
bool isPlainAscii(QStringView text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x80 && c != u'\r'; });
}

// Walks from one end of a character to the next.
class Characters {
public:
    explicit Characters(QStringView text)
        : m_text(text)
        , m_finder(QTextBoundaryFinder::Grapheme, text.data(), text.size())
    {}

    // Where the next one ends, or -1 behind the last.
    qsizetype next()
    {
        if (m_at == m_text.size())
            return -1;
        if (m_at == m_clusterEnd) {
            const qsizetype end = m_finder.toNextBoundary();
            m_clusterEnd = end < 0 ? m_text.size() : end;
        }
        m_at = pieceEnd();
        return m_at;
    }

private:
    [[nodiscard]] qsizetype pieceEnd() const
    {
        if (m_clusterEnd - m_at <= Text::longestCharacter)
            return m_clusterEnd;
        const qsizetype end = m_at + Text::longestCharacter;
        return m_text[end - 1].isHighSurrogate() ? end - 1 : end;
    }

    QStringView m_text;
    QTextBoundaryFinder m_finder;
    qsizetype m_at = 0;
    qsizetype m_clusterEnd = 0;
};

qsizetype boundaryAfter(QStringView text, qsizetype count)
{
    Characters characters(text);
    qsizetype end = 0;
    for (qsizetype seen = 0; seen < count && end >= 0; ++seen)
        end = characters.next();
    return end < 0 ? text.size() : end;
}

// UTF-16 offset of the boundary behind the first `count` characters.
qsizetype offsetAfter(QStringView text, qsizetype count)
{
    if (count <= 0)
        return 0;
    if (count >= text.size())
        return text.size();
    if (isPlainAscii(text.first(count + 1)))
        return count;
    // A finder looks at all of its text at once, so it gets no more of a long one than it needs. The end of a
    // part is no boundary of the whole, and a pair of surrogates may be cut there.
    for (qsizetype size = 4 * count; size < text.size(); size *= 4) {
        const qsizetype offset = boundaryAfter(text.first(size), count);
        if (offset < size - 1)
            return offset;
    }
    return boundaryAfter(text, count);
}

template <typename View>
View withoutOuterBlanks(View text)
{
    const auto isBlank = [](auto c) { return c == ' ' || c == '\t'; };
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && isBlank(text[first]))
        ++first;
    while (last > first && isBlank(text[last - 1]))
        --last;
    return text.sliced(first, last - first);
}

} // namespace

qsizetype Text::characterCount(QStringView text)
{
    if (isPlainAscii(text))
        return text.size();
    Characters characters(text);
    qsizetype count = 0;
    while (characters.next() >= 0)
        ++count;
    return count;
}

bool Text::hasAtLeast(QStringView text, qsizetype count)
{
    return count <= 0 || (text.size() >= count && offsetAfter(text, count - 1) < text.size());
}

QString Text::prefix(QStringView text, qsizetype count)
{
    return text.first(offsetAfter(text, count)).toString();
}

QString Text::droppingLast(QStringView text, qsizetype count)
{
    return count <= 0 ? text.toString() : prefix(text, characterCount(text) - count);
}

QString Text::trimmed(QStringView text)
{
    return text.trimmed().toString();
}

QStringView Text::leadingTrimmed(QStringView text)
{
    while (!text.isEmpty() && text.front().isSpace())
        text = text.sliced(1);
    return text;
}

QStringView Text::trimmedBlanks(QStringView text)
{
    return withoutOuterBlanks(text);
}

QByteArrayView Text::trimmedBlanks(QByteArrayView text)
{
    return withoutOuterBlanks(text);
}

std::optional<QString> Text::fromUtf8(QByteArrayView bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

} // namespace morvane
