#include "highlighting/MarkupLanguage.h"

#include <algorithm>
#include <utility>

namespace morvane {

namespace {

// The number that a line hands on: where it ends, what a tag that is open there leads to, and above both the
// number of the other language.
enum Place { text, comment, tag, inDoubleQuotes, inSingleQuotes, embedded };
enum Content { markup, script, style };
constexpr int placeMask = 7;
constexpr int contentShift = 3;
constexpr int contentMask = 3;
constexpr int innerShift = 5;

bool isNameCharacter(QChar c)
{
    return c.isLetterOrNumber() || c == u'-' || c == u'_' || c == u':' || c == u'.' || c == u'@';
}

} // namespace

class MarkupLanguage::Reader {
public:
    Reader(const MarkupLanguage &language, QStringView line, int state)
        : m_language(language)
        , m_line(line)
        , m_place(static_cast<Place>(std::min(state & placeMask, static_cast<int>(embedded))))
        , m_content(
              static_cast<Content>(std::min(state >> contentShift & contentMask, static_cast<int>(style))))
        , m_inner(state >> innerShift)
    {}

    Line read()
    {
        while (m_at < m_line.size())
            step();
        const bool holds = m_place == embedded;
        m_result.state = m_place | m_content << contentShift | (holds ? m_inner << innerShift : 0);
        return std::move(m_result);
    }

private:
    void add(qsizetype from, CodeToken token)
    {
        if (m_at > from)
            m_result.spans.append({from, m_at - from, token});
    }

    // Goes on behind these words, or to the line's end; whether they were there.
    bool pass(QStringView words)
    {
        const qsizetype found = m_line.indexOf(words, m_at);
        m_at = found < 0 ? m_line.size() : found + words.size();
        return found >= 0;
    }

    void step()
    {
        const qsizetype from = m_at;
        switch (m_place) {
        case text:
            openTag();
            break;
        case comment:
            if (pass(u"-->"))
                m_place = text;
            add(from, CodeToken::comment);
            break;
        case tag:
            insideTag();
            break;
        case inDoubleQuotes:
        case inSingleQuotes:
            if (pass(m_place == inDoubleQuotes ? u"\"" : u"'"))
                m_place = tag;
            add(from, CodeToken::string);
            break;
        case embedded:
            readEmbedded();
            break;
        }
    }

    void openTag()
    {
        const qsizetype from = m_at;
        if (!m_line.sliced(m_at).startsWith(u'<')) {
            ++m_at;
            return;
        }
        if (m_line.sliced(m_at).startsWith(u"<!--")) {
            m_at += 4;
            m_place = comment;
            add(from, CodeToken::comment);
            return;
        }
        ++m_at;
        while (m_at < m_line.size() && (m_line[m_at] == u'/' || m_line[m_at] == u'!' || m_line[m_at] == u'?'))
            ++m_at;
        const qsizetype nameFrom = m_at;
        while (m_at < m_line.size() && isNameCharacter(m_line[m_at]))
            ++m_at;
        const QStringView name = m_line.sliced(nameFrom, m_at - nameFrom);
        if (name.isEmpty())
            return; // no more than a sign
        add(nameFrom, CodeToken::keyword);
        m_place = tag;
        const bool opens = nameFrom == from + 1;
        m_content = opens && name.compare(u"script", Qt::CaseInsensitive) == 0  ? script
                    : opens && name.compare(u"style", Qt::CaseInsensitive) == 0 ? style
                                                                                : markup;
    }

    void insideTag()
    {
        const qsizetype from = m_at++;
        const QChar c = m_line[from];
        if (c == u'>') {
            m_place = m_content == markup ? text : embedded;
            m_inner = start;
        } else if (c == u'"' || c == u'\'') {
            m_place = c == u'"' ? inDoubleQuotes : inSingleQuotes;
            add(from, CodeToken::string);
        } else if (isNameCharacter(c)) {
            while (m_at < m_line.size() && isNameCharacter(m_line[m_at]))
                ++m_at;
            add(from, CodeToken::name);
        }
    }

    void readEmbedded()
    {
        const qsizetype end =
            m_line.indexOf(m_content == script ? u"</script" : u"</style", m_at, Qt::CaseInsensitive);
        const QStringView part = m_line.sliced(m_at, (end < 0 ? m_line.size() : end) - m_at);
        Line inner = (m_content == script ? m_language.m_script : m_language.m_style).read(part, m_inner);
        for (CodeSpan span : std::as_const(inner.spans)) {
            span.start += m_at;
            m_result.spans.append(span);
        }
        m_at += part.size();
        m_inner = inner.state;
        if (end < 0)
            return;
        m_place = text;
        m_content = markup;
    }

    const MarkupLanguage &m_language;
    QStringView m_line;
    qsizetype m_at = 0;
    Place m_place;
    Content m_content;
    int m_inner;
    Line m_result;
};

CodeLanguage::Line MarkupLanguage::read(QStringView line, int state) const
{
    return Reader(*this, line, state).read();
}

} // namespace morvane
