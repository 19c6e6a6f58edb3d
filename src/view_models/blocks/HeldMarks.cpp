#include "view_models/blocks/HeldMarks.h"

#include "markdown/LineGrammar.h"

#include <QList>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// A mark that is open for longer is not about to close.
constexpr qsizetype longestHeld = 200;

constexpr qsizetype mostDigits = 3;

// Words that may yet become the mark of their line, or are one without its words.
bool isLineMark(QStringView words)
{
    const auto digits =
        std::find_if_not(words.begin(), words.end(), [](QChar c) { return c.isDigit(); }) - words.begin();
    if (digits > 0)
        return digits <= mostDigits &&
               (digits == words.size() || words.sliced(digits) == u"." || words.sliced(digits) == u")");
    const auto isMark = [](QChar c) { return u"-*+#>`~_= "_s.contains(c); };
    return words.startsWith("```"_L1) ||
           (!words.isEmpty() && std::all_of(words.begin(), words.end(), isMark));
}

// Looks through a piece of a line for marks that nothing closes.
class OpenMarks {
public:
    // The line up to where it ends so far, and the place from which on a mark may wait.
    OpenMarks(QStringView line, qsizetype from)
        : m_line(line)
        , m_from(from)
    {}

    // The first one; -1 for none.
    [[nodiscard]] qsizetype first()
    {
        for (qsizetype at = 0; at < m_line.size();) {
            const qsizetype length = markLength(at);
            const bool open = length > 0 && isOpen(at, length);
            if (open && at >= m_from)
                return at;
            at += std::max<qsizetype>(1, length + skipped(at, length));
        }
        return -1;
    }

private:
    [[nodiscard]] qsizetype markLength(qsizetype at) const
    {
        const QChar mark = m_line[at];
        if (mark == u'\\')
            return 2; // and what it takes the meaning from
        if (mark == u'[')
            return 1;
        if (!u"*_~`"_s.contains(mark))
            return 0;
        qsizetype end = at;
        while (end < m_line.size() && m_line[end] == mark)
            ++end;
        return end - at;
    }

    // Notes the end of what isn't open, so that it isn't taken for a beginning.
    [[nodiscard]] bool isOpen(qsizetype at, qsizetype length)
    {
        const qsizetype end = at + length;
        const QChar mark = m_line[at];
        if (mark == u'\\' || m_ends.contains(at))
            return false;
        if (mark == u'[')
            return isOpenLink(end);
        if (end == m_line.size())
            return true;
        const bool isInWord = mark == u'_' && at > 0 && m_line[at - 1].isLetterOrNumber();
        if (isInWord || (mark != u'`' && m_line[end].isSpace()))
            return false;
        return closing(at, length) < 0;
    }

    [[nodiscard]] bool isOpenLink(qsizetype end) const
    {
        const qsizetype bracket = m_line.indexOf(u']', end);
        if (bracket < 0 || bracket + 1 == m_line.size())
            return true;
        return m_line[bracket + 1] == u'(' && m_line.indexOf(u')', bracket) < 0;
    }

    [[nodiscard]] qsizetype closing(qsizetype at, qsizetype length)
    {
        const qsizetype end = m_line.indexOf(m_line.sliced(at, length), at + length);
        if (end >= 0)
            m_ends.append(end);
        return end;
    }

    // Inside code nothing is a mark.
    [[nodiscard]] qsizetype skipped(qsizetype at, qsizetype length)
    {
        if (length == 0 || m_line[at] != u'`' || m_ends.contains(at))
            return 0;
        const qsizetype end = closing(at, length);
        return end < 0 ? 0 : end - at - length;
    }

    QStringView m_line;
    qsizetype m_from;
    QList<qsizetype> m_ends;
};

} // namespace

qsizetype HeldMarks::shownLength(QStringView text)
{
    readLines(text);
    m_shown = std::max(m_shown, m_held);
    m_held = m_fence ? -1 : markIn(text);
    return m_held < 0 ? text.size() : m_held;
}

void HeldMarks::readLines(QStringView text)
{
    for (qsizetype end = text.indexOf(u'\n', m_lineStart); end >= 0; end = text.indexOf(u'\n', m_lineStart)) {
        const QStringView line = LineGrammar::trimmed(text.sliced(m_lineStart, end - m_lineStart));
        if (!m_fence)
            m_fence = LineGrammar::openingFence(line);
        else if (LineGrammar::closingFence(line, *m_fence))
            m_fence.reset();
        m_lineStart = end + 1;
    }
}

qsizetype HeldMarks::markIn(QStringView text) const
{
    const QStringView line = text.sliced(m_lineStart);
    if (m_lineStart > m_shown && isLineMark(LineGrammar::trimmed(line)))
        return m_lineStart;
    const qsizetype start = std::max(m_lineStart, text.size() - longestHeld);
    const qsizetype open = OpenMarks(text.sliced(start), m_shown + 1 - start).first();
    return open < 0 ? -1 : start + open;
}

} // namespace morvane
