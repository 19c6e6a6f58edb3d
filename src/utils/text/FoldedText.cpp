#include "utils/text/FoldedText.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

bool isAscii(QStringView text)
{
    return std::all_of(text.begin(), text.end(), [](QChar unit) { return unit < u'\x80'; });
}

bool isComposed(char32_t character)
{
    const bool isHangul = character >= 0xAC00 && character <= 0xD7A3;
    return isHangul || QChar::decompositionTag(character) != QChar::NoDecomposition;
}

} // namespace

FoldedText::FoldedText(QStringView text)
    : m_length(text.size())
{
    if (isAscii(text)) {
        m_text = text.toString().toLower();
        for (QChar &unit : m_text)
            unit = unit.isSpace() ? u' ' : unit;
        return;
    }
    m_text.reserve(text.size());
    m_origins.reserve(static_cast<std::size_t>(text.size()));
    for (qsizetype at = 0; at < text.size(); ++at) {
        const bool isPair =
            text[at].isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate();
        addCharacter(isPair ? QChar::surrogateToUcs4(text[at], text[at + 1]) : char32_t(text[at].unicode()),
                     at);
        at += isPair ? 1 : 0;
    }
}

void FoldedText::addCharacter(char32_t character, qsizetype origin)
{
    if (isComposed(character)) {
        add(QString::fromUcs4(&character, 1).normalized(QString::NormalizationForm_KD).toCaseFolded(),
            origin);
    } else if (character == U'ß') {
        add(u"ss"_s, origin); // a folding to two letters, which Qt's leaves out
    } else if (QChar::category(character) != QChar::Mark_NonSpacing) {
        const char32_t folded = QChar::toCaseFolded(character);
        add(QString::fromUcs4(&folded, 1), origin);
    }
}

void FoldedText::add(const QString &units, qsizetype origin)
{
    for (const QChar unit : units) {
        if (unit.category() == QChar::Mark_NonSpacing)
            continue;
        m_text += unit.isSpace() ? u' ' : unit;
        m_origins.push_back(origin);
    }
}

qsizetype FoldedText::originOf(qsizetype place) const
{
    if (m_text.size() == m_length && m_origins.empty())
        return place;
    return place < m_text.size() ? m_origins[static_cast<std::size_t>(place)] : m_length;
}

qsizetype FoldedText::originOfEnd(qsizetype place) const
{
    if (place == 0)
        return 0;
    qsizetype next = place;
    while (next < m_text.size() && originOf(next) == originOf(place - 1))
        ++next;
    return originOf(next);
}

} // namespace morvane
