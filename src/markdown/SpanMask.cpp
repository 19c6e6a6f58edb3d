#include "markdown/SpanMask.h"

#include "markdown/CodeSpans.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr QChar letter = u'x';
constexpr QChar punctuation = u',';
constexpr qsizetype longestFootnote = 40;
constexpr char16_t firstEastAsian = 0x2E80;

// Letters, marks and wide forms of Chinese, Japanese and Korean; their space is a space.
bool isEastAsian(QChar c)
{
    const char16_t code = c.unicode();
    if (code < firstEastAsian)
        return false;
    return (code <= 0x9FFF && code != 0x3000) || (code >= 0xAC00 && code <= 0xD7AF) ||
           (code >= 0xF900 && code <= 0xFAFF) || (code >= 0xFE30 && code <= 0xFE4F) ||
           (code >= 0xFF00 && code <= 0xFFEF);
}

bool isPunctuation(QChar c)
{
    return c.isPunct() || (c.unicode() < 0x80 && c.isSymbol());
}

class Masking {
public:
    explicit Masking(QStringView text)
        : m_text(text)
        , m_code(text)
        , m_masked{.text = text.toString(), .formulas = {}}
    {}

    SpanMask::Masked run()
    {
        qsizetype at = 0;
        while (at < m_text.size())
            at = pass(at);
        return std::move(m_masked);
    }

private:
    // Deals with what begins at the place, and tells where it ends.
    qsizetype pass(qsizetype at)
    {
        switch (m_text[at].unicode()) {
        case u'`':
            return m_code.endOfSpan(at);
        case u'\\':
            return passBackslash(at);
        case u'$':
            return passDollars(at);
        case u'[':
            return passBracket(at);
        case u']':
        case u':':
            return passAddress(at);
        case u'*':
        case u'~':
            return passEmphasis(at);
        default:
            return at + 1;
        }
    }

    qsizetype passBackslash(qsizetype at)
    {
        const QStringView mark = m_text.sliced(at).first(std::min<qsizetype>(2, m_text.size() - at));
        const bool opens = mark == "\\("_L1;
        const bool opensWide = mark == "\\["_L1;
        const qsizetype end = opens       ? next("\\)"_L1, at + 2, m_noParenthesis)
                              : opensWide ? next("\\]"_L1, at + 2, m_noBracket)
                                          : -1;
        if (end >= 0)
            return maskFormula(at, end + 2);
        if (opens || mark == "\\)"_L1)
            mask(at, 2, punctuation);
        return at + mark.size();
    }

    // Where the mark is found next. Once it isn't, nobody looks again.
    qsizetype next(QLatin1StringView mark, qsizetype from, bool &none) const
    {
        const qsizetype found = none ? -1 : m_text.indexOf(mark, from);
        none = found < 0;
        return found;
    }

    qsizetype passDollars(qsizetype at)
    {
        const qsizetype inner = endOfRun(at);
        if (inner - at != 2)
            return inner;
        const qsizetype end = next("$$"_L1, inner, m_noDollars);
        if (end < 0 || endOfRun(end) != end + 2 ||
            !SpanMask::looksLikeFormula(m_text.sliced(inner, end - inner)))
            return inner;
        return maskFormula(at, end + 2);
    }

    qsizetype passBracket(qsizetype at)
    {
        if (!m_text.sliced(at).startsWith("[^"_L1))
            return at + 1;
        const QStringView near = m_text.sliced(at).first(std::min(longestFootnote, m_text.size() - at));
        const qsizetype end = near.indexOf(u']');
        const auto isOfName = [](QChar c) { return !c.isSpace() && c != u'['; };
        if (end < 3 || !std::all_of(near.begin() + 1, near.begin() + end, isOfName))
            return at + 1;
        mask(at, 1, punctuation);
        mask(at + end, 1, punctuation);
        return at + end + 1;
    }

    // Backslashes and parentheses of an address are its own: behind "](", or as it stands among the words.
    qsizetype passAddress(qsizetype at)
    {
        const bool isBehindLabel = m_text.sliced(at).startsWith("]("_L1);
        if (!isBehindLabel && !m_text.sliced(at).startsWith("://"_L1))
            return at + 1;
        int open = 0;
        for (at += 2; at < m_text.size(); ++at) {
            const QChar c = m_text[at];
            open += c == u'(' ? 1 : c == u')' ? -1 : 0;
            if (c.isSpace() || c == u'`' || (isBehindLabel && open < 0))
                break;
            at += c == u'\\' && at + 1 < m_text.size() ? 1 : 0;
        }
        return at;
    }

    // A parser tells the begin of emphasis from its end by spaces and punctuation beside it. East Asian text
    // has no spaces, and punctuation where others have one.
    qsizetype passEmphasis(qsizetype at)
    {
        const qsizetype end = endOfRun(at);
        if (at > 0 && end < m_text.size()) {
            maskBeside(at - 1, m_text[end]);
            maskBeside(end, m_text[at - 1]);
        } else if (at > 0) {
            maskBeside(at - 1, letter);
        } else if (end < m_text.size()) {
            maskBeside(end, letter);
        }
        return end;
    }

    void maskBeside(qsizetype at, QChar other)
    {
        if (!isEastAsian(m_text[at]))
            return;
        if (isPunctuation(other) && !isEastAsian(other))
            mask(at, 1, punctuation);
        else if (isPunctuation(m_text[at]) || m_text[at].isSymbol())
            mask(at, 1, letter);
    }

    qsizetype maskFormula(qsizetype start, qsizetype end)
    {
        mask(start, end - start, letter);
        m_masked.text[start] = punctuation;
        m_masked.text[end - 1] = punctuation;
        m_masked.formulas.append({start, end - start});
        return end;
    }

    void mask(qsizetype at, qsizetype length, QChar standIn)
    {
        std::fill_n(m_masked.text.begin() + at, length, standIn);
    }

    [[nodiscard]] qsizetype endOfRun(qsizetype at) const
    {
        const QChar mark = m_text[at];
        while (at < m_text.size() && m_text[at] == mark)
            ++at;
        return at;
    }

    QStringView m_text;
    CodeSpans m_code;
    SpanMask::Masked m_masked;
    bool m_noParenthesis = false;
    bool m_noBracket = false;
    bool m_noDollars = false;
};

} // namespace

SpanMask::Masked SpanMask::of(QStringView text)
{
    return Masking(text).run();
}

bool SpanMask::isNeeded(QStringView text)
{
    const auto isAnyEastAsian = [](QChar c) { return c.unicode() >= firstEastAsian && isEastAsian(c); };
    return text.contains(u'\\') || text.contains(u'$') || text.contains(u'^') ||
           std::any_of(text.begin(), text.end(), isAnyEastAsian);
}

bool SpanMask::looksLikeFormula(QStringView text)
{
    const QStringView words = text.trimmed();
    const auto isOfFormula = [](QChar c) { return QStringView(u"\\^_{=").contains(c); };
    return !words.isEmpty() && (words[0].isLetterOrNumber() || QStringView(u"\\([{-|").contains(words[0])) &&
           std::any_of(words.begin(), words.end(), isOfFormula);
}

} // namespace morvane
