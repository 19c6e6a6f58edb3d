#include "view_models/sidebar/SearchTerms.h"

#include "utils/text/FoldedText.h"

#include <algorithm>

namespace morvane {

namespace {

constexpr qsizetype maxWords = 8;
constexpr qsizetype excerptLength = 158; // leaves room for both ellipses
constexpr qsizetype leadLength = 32;

QString folded(const QString &text)
{
    return FoldedText(text).text();
}

// Never between the two halves of a surrogate pair.
qsizetype wholeCharacter(const QString &text, qsizetype position)
{
    const bool splitsPair = position > 0 && position < text.size() && text[position].isLowSurrogate();
    return splitsPair ? position - 1 : position;
}

} // namespace

SearchTerms::SearchTerms(const QString &query)
    : m_words(folded(query.simplified()).split(u' ', Qt::SkipEmptyParts).mid(0, maxWords))
{}

bool SearchTerms::match(const QString &text) const
{
    const QString plain = folded(text);
    return !isEmpty() && std::all_of(m_words.begin(), m_words.end(),
                                     [&plain](const QString &word) { return plain.contains(word); });
}

QString SearchTerms::excerpt(const QString &text) const
{
    const QString line = text.simplified();
    qsizetype first = line.size();
    for (const QString &word : m_words) {
        const qsizetype at = line.indexOf(word, 0, Qt::CaseInsensitive);
        if (at >= 0)
            first = std::min(first, at);
    }
    if (first == line.size())
        first = 0; // written with other accents than the search
    qsizetype start = first > leadLength ? line.indexOf(u' ', first - leadLength) + 1 : 0;
    if (start > first || (start == 0 && first > leadLength))
        start = first;
    start = wholeCharacter(line, start);
    const qsizetype end = wholeCharacter(line, std::min(line.size(), start + excerptLength));
    QString cut = line.sliced(start, end - start);
    if (start > 0)
        cut.prepend(u'…');
    if (end < line.size())
        cut.append(u'…');
    return cut;
}

} // namespace morvane
