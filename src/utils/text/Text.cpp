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

qsizetype boundaryAfter(QStringView text, qsizetype count)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text.data(), text.size());
    for (qsizetype seen = 0; seen < count; ++seen) {
        if (finder.toNextBoundary() < 0)
            return text.size();
    }
    return finder.position();
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
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text.data(), text.size());
    qsizetype count = 0;
    while (finder.toNextBoundary() >= 0)
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
    if (count <= 0)
        return text.toString();
    if (isPlainAscii(text))
        return text.first(std::max<qsizetype>(0, text.size() - count)).toString();
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text.data(), text.size());
    finder.toEnd();
    for (qsizetype dropped = 0; dropped < count; ++dropped) {
        if (finder.toPreviousBoundary() < 0)
            return {};
    }
    return text.first(finder.position()).toString();
}

QString Text::trimmed(QStringView text)
{
    return text.trimmed().toString();
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
