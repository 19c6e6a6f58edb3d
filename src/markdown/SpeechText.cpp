#include "markdown/SpeechText.h"

#include "utils/text/Text.h"

#include <QRegularExpression>
#include <QStringView>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using MarkdownRenderer::CodeInSpeech;

constexpr qsizetype fewestMarksOfADivider = 3;

// Looks for one character from places that only go forward, and looks at each place once.
class ForwardSearch {
public:
    ForwardSearch(QStringView text, QChar wanted)
        : m_text(text)
        , m_wanted(wanted)
    {}

    // The first one at `from` or behind it, or -1.
    qsizetype next(qsizetype from)
    {
        if (!m_searched || (m_found >= 0 && m_found < from))
            m_found = m_text.indexOf(m_wanted, from);
        m_searched = true;
        return m_found;
    }

private:
    QStringView m_text;
    QChar m_wanted;
    qsizetype m_found = -1;
    bool m_searched = false;
};

bool isLanguageCharacter(QChar c)
{
    return c == u'+' || c == u'-' || (c.unicode() < 0x80 && c.isLetterOrNumber());
}

// "```lang", perhaps a line feed, anything, "```".
QString withoutFences(const QString &text, CodeInSpeech code)
{
    constexpr auto fence = "```"_L1;
    QString result;
    qsizetype at = 0;
    for (qsizetype start = text.indexOf(fence); start >= 0; start = text.indexOf(fence, at)) {
        qsizetype inner = start + fence.size();
        while (inner < text.size() && isLanguageCharacter(text[inner]))
            ++inner;
        if (inner < text.size() && text[inner] == u'\n')
            ++inner;
        const qsizetype end = text.indexOf(fence, inner);
        if (end < 0)
            break;
        result += QStringView(text).sliced(at, start - at);
        if (code == CodeInSpeech::read)
            result += QStringView(text).sliced(inner, end - inner);
        else
            result += u"…there's a code example here…"_s;
        at = end + fence.size();
    }
    return result.append(QStringView(text).sliced(at));
}

enum class Label { dropped, kept };

// "lead" label "](" address ")", as a pattern would find it from left to right. A pattern would look for the
// same closing bracket again and again.
QString withoutLinks(const QString &text, QLatin1StringView lead, Label label)
{
    ForwardSearch bracket(text, u']');
    ForwardSearch parenthesis(text, u')');
    const qsizetype shortestLabel = label == Label::kept ? 1 : 0;
    QString result;
    qsizetype at = 0;
    for (qsizetype start = text.indexOf(lead); start >= 0;) {
        const qsizetype inner = start + lead.size();
        const qsizetype close = bracket.next(inner);
        const bool isLink =
            close >= inner + shortestLabel && QStringView(text).sliced(close).startsWith("]("_L1);
        const qsizetype end = isLink ? parenthesis.next(close + 2) : -1;
        if (end >= 0) {
            result += QStringView(text).sliced(at, start - at);
            if (label == Label::kept)
                result += QStringView(text).sliced(inner, close - inner);
            at = end + 1;
        }
        start = text.indexOf(lead, end >= 0 ? at : start + 1);
    }
    return result.append(QStringView(text).sliced(at));
}

qsizetype afterWhiteSpace(QStringView text, qsizetype at)
{
    while (at < text.size() && text[at].isSpace())
        ++at;
    return at;
}

// Where the match ends that begins with the mark at `at`; -1 for none.
using Matcher = qsizetype (*)(QStringView text, qsizetype at);

// Drops what a pattern "^\s*" and a mark would match. Line starts within one stretch of white space lead to
// the same mark, so that it is tried once.
QString withoutLineStarts(const QString &text, Matcher match)
{
    QString result;
    qsizetype kept = 0; // what stands before is in the result
    qsizetype start = 0;
    while (start < text.size()) {
        const qsizetype mark = afterWhiteSpace(text, start);
        const qsizetype end = mark < text.size() ? match(text, mark) : -1;
        if (end >= 0) {
            result += QStringView(text).sliced(kept, start - kept);
            kept = end;
        }
        const qsizetype next = end >= 0 ? end : mark;
        const bool atLineStart = end >= 0 && text[end - 1] == u'\n';
        const qsizetype lineEnd = text.indexOf(u'\n', next);
        start = atLineStart ? next : lineEnd < 0 ? text.size() : lineEnd + 1;
    }
    return result.append(QStringView(text).sliced(kept));
}

// "[-*+]\s+"
qsizetype bullet(QStringView text, qsizetype at)
{
    const qsizetype end = afterWhiteSpace(text, at + 1);
    return QStringView(u"-*+").contains(text[at]) && end > at + 1 ? end : -1;
}

// "\d+\.\s+"
qsizetype number(QStringView text, qsizetype at)
{
    qsizetype point = at;
    while (point < text.size() && text[point].isDigit())
        ++point;
    if (point == at || point >= text.size() || text[point] != u'.')
        return -1;
    const qsizetype end = afterWhiteSpace(text, point + 1);
    return end > point + 1 ? end : -1;
}

// "([-*_]\s*){3,}$": the longest one, which may end at any line end behind its third mark.
qsizetype divider(QStringView text, qsizetype at)
{
    qsizetype end = -1;
    qsizetype marks = 0;
    while (at < text.size() && QStringView(u"-*_").contains(text[at])) {
        ++marks;
        const qsizetype next = afterWhiteSpace(text, at + 1);
        for (qsizetype place = at + 1; marks >= fewestMarksOfADivider && place <= next; ++place) {
            if (place == text.size() || text[place] == u'\n')
                end = place;
        }
        at = next;
    }
    return end;
}

void replace(QString &text, const QString &pattern, const QString &replacement)
{
    text.replace(QRegularExpression(pattern, QRegularExpression::UseUnicodePropertiesOption), replacement);
}

} // namespace

QString SpeechText::clean(QString text, CodeInSpeech code)
{
    text = withoutFences(text, code);
    replace(text, u"`([^`\\n]+)`"_s, u"\\1"_s);
    text = withoutLinks(text, "!["_L1, Label::dropped);
    text = withoutLinks(text, "["_L1, Label::kept);
    replace(text, u"(?m)^#{1,6}\\s+"_s, {});
    replace(text, u"(\\*\\*|__)(.*?)\\1"_s, u"\\2"_s);
    replace(text, u"(\\*|_)([^*_\\n]+)\\1"_s, u"\\2"_s);
    replace(text, u"~~(.*?)~~"_s, u"\\1"_s);
    replace(text, u"(?m)^>\\s?"_s, {});
    text = withoutLineStarts(text, bullet);
    text = withoutLineStarts(text, number);
    text = withoutLineStarts(text, divider);
    replace(text, u"\\n{3,}"_s, u"\n\n"_s);
    return Text::trimmed(text);
}

} // namespace morvane
