#include "highlighting/GrammarLanguage.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The number that a line hands on: a quote or a comment that is open, counted from 1, with the depth of
// nested comments above it; or a here document, with a digest of the word that ends it.
constexpr int kindMask = 0xff;
constexpr int depthShift = 8;
constexpr int deepest = 0xff;
constexpr int hereBit = 1 << 24;
constexpr int digestMask = 0xffff;

constexpr qsizetype longestCharacter = 12; // of a character written as an escape

bool isBlank(QChar c)
{
    return c == u' ' || c == u'\t';
}

int hereState(QStringView word)
{
    uint digest = 0;
    for (const QChar c : word)
        digest = digest * 31 + c.unicode();
    return hereBit | static_cast<int>(digest & digestMask);
}

} // namespace

class GrammarLanguage::Reader {
public:
    Reader(const GrammarLanguage &language, QStringView line)
        : m_language(language)
        , m_grammar(language.m_grammar)
        , m_line(line)
    {
        while (m_begin < line.size() && isBlank(line[m_begin]))
            ++m_begin;
    }

    Line read(int state)
    {
        if (state & hereBit)
            return hereLine(state);
        goOn(state);
        while (m_at < m_line.size()) {
            if (!escape() && !comment() && !quote() && !hereDocument() && !regex() && !number() && !word())
                ++m_at;
        }
        if (m_result.state == start)
            m_result.state = m_here;
        return std::move(m_result);
    }

private:
    [[nodiscard]] QChar at(qsizetype place) const
    {
        return place >= 0 && place < m_line.size() ? m_line[place] : QChar();
    }
    [[nodiscard]] bool stands(QStringView text, qsizetype place) const
    {
        return m_line.sliced(place).startsWith(text);
    }
    [[nodiscard]] bool isWordCharacter(QChar c) const { return c.isLetterOrNumber() || c == u'_'; }

    void add(qsizetype from, CodeToken token)
    {
        if (m_at > from)
            m_result.spans.append({from, m_at - from, token});
    }

    Line hereLine(int state)
    {
        const QStringView word = hereWord(m_begin);
        const QChar next = at(m_begin + word.size());
        const bool ends = hereState(word) == state && (next.isNull() || u";,)"_s.contains(next));
        m_at = ends ? m_begin + word.size() : m_line.size();
        add(ends ? m_begin : 0, ends ? CodeToken::keyword : CodeToken::string);
        m_result.state = ends ? start : state;
        return std::move(m_result);
    }

    void goOn(int state)
    {
        const int open = (state & kindMask) - 1;
        const auto quotes = static_cast<int>(m_grammar.quotes.size());
        if (open >= 0 && open < quotes)
            restOfQuote(open, 0);
        else if (open >= quotes && open < quotes + m_grammar.comments.size())
            restOfComment(open - quotes, 0, std::clamp(state >> depthShift, 1, deepest));
    }

    // A quote mark that opens nothing.
    bool escape()
    {
        if (m_line[m_at] != u'\\' || !u"\"'`"_s.contains(at(m_at + 1)) || m_at + 1 == m_line.size())
            return false;
        m_at += 2;
        return true;
    }

    bool comment()
    {
        const bool begins = !m_grammar.blankBefore || m_at == 0 || isBlank(m_line[m_at - 1]);
        for (const QStringView mark : m_grammar.lineComments) {
            if (!begins || !stands(mark, m_at))
                continue;
            const qsizetype from = std::exchange(m_at, m_line.size());
            add(from, CodeToken::comment);
            return true;
        }
        for (int i = 0; i < m_grammar.comments.size(); ++i) {
            if (!stands(m_grammar.comments[i].opens, m_at))
                continue;
            const qsizetype from = m_at;
            m_at += m_grammar.comments[i].opens.size();
            restOfComment(i, from, 1);
            return true;
        }
        return false;
    }

    void restOfComment(int index, qsizetype from, int depth)
    {
        const CodeGrammar::Comment &form = m_grammar.comments[index];
        while (m_at < m_line.size() && depth > 0) {
            if (stands(form.closes, m_at)) {
                --depth;
                m_at += form.closes.size();
            } else if (form.nests && stands(form.opens, m_at)) {
                depth = std::min(depth + 1, deepest);
                m_at += form.opens.size();
            } else {
                ++m_at;
            }
        }
        add(from, CodeToken::comment);
        if (depth > 0)
            m_result.state = depth << depthShift | static_cast<int>(m_grammar.quotes.size() + index + 1);
    }

    bool quote()
    {
        for (int i = 0; i < m_grammar.quotes.size(); ++i) {
            const CodeGrammar::Quote &form = m_grammar.quotes[i];
            if (!stands(form.opens, m_at))
                continue;
            if (form.end == CodeGrammar::Quote::End::character)
                return character(form);
            const qsizetype from = m_at;
            m_at += form.opens.size();
            restOfQuote(i, from);
            return true;
        }
        return false;
    }

    bool character(const CodeGrammar::Quote &form)
    {
        const qsizetype from = m_at;
        qsizetype last = m_at + 1;
        if (at(last) == form.escape)
            last = m_line.sliced(0, std::min(m_line.size(), last + longestCharacter))
                       .indexOf(form.closes, last + 2);
        else
            last += at(last).isHighSurrogate() ? 2 : 1;
        if (last < 0 || at(last) != form.closes[0])
            return false;
        m_at = last + 1;
        add(from, CodeToken::string);
        return true;
    }

    void restOfQuote(int index, qsizetype from)
    {
        const CodeGrammar::Quote &form = m_grammar.quotes[index];
        bool open = true;
        while (open && m_at < m_line.size()) {
            if (form.escape != 0 && m_line[m_at] == form.escape) {
                m_at = std::min(m_at + 2, m_line.size());
            } else if (!stands(form.closes, m_at)) {
                ++m_at;
            } else {
                m_at += form.closes.size();
                open = form.doubled && stands(form.closes, m_at);
                if (open)
                    m_at += form.closes.size();
            }
        }
        add(from, !open && isKey() ? CodeToken::name : CodeToken::string);
        if (open && form.end == CodeGrammar::Quote::End::anywhere)
            m_result.state = index + 1;
    }

    // "<<END", "<<-'END'", "<<~END", "<<<END". The word is of capitals: a shift looks the same.
    bool hereDocument()
    {
        if (m_grammar.hereSigns.isEmpty() || !stands(u"<<", m_at))
            return false;
        constexpr qsizetype mostSigns = 2;
        qsizetype from = m_at + 2;
        while (from < m_at + 2 + mostSigns && from < m_line.size() && m_grammar.hereSigns.contains(at(from)))
            ++from;
        const bool isQuoted = at(from) == u'\'' || at(from) == u'"';
        from += isQuoted ? 1 : 0;
        const QStringView word = hereWord(from);
        if (word.isEmpty() || isWordCharacter(at(from + word.size()))) {
            m_at += 2;
            return true;
        }
        m_here = hereState(word);
        m_at = from + word.size();
        add(from, CodeToken::keyword);
        m_at += isQuoted && m_at < m_line.size() ? 1 : 0;
        return true;
    }

    [[nodiscard]] QStringView hereWord(qsizetype from) const
    {
        qsizetype end = from;
        while (at(end).isUpper() || (end > from && (at(end).isDigit() || at(end) == u'_')))
            ++end;
        return m_line.sliced(std::min(from, m_line.size()), end - from);
    }

    // Where a value is expected: after a sign that takes one, or at the begin.
    bool regex()
    {
        if (!m_grammar.regexLiterals || m_line[m_at] != u'/' || m_noRegexLeft)
            return false;
        qsizetype before = m_at - 1;
        while (before >= 0 && isBlank(m_line[before]))
            --before;
        if (before >= 0 && !u"(,=:[!&|?{};+~"_s.contains(m_line[before]))
            return false;
        bool inSet = false;
        qsizetype end = m_at + 1;
        for (; end < m_line.size() && (inSet || m_line[end] != u'/'); ++end) {
            if (m_line[end] == u'\\')
                ++end;
            else if (m_line[end] == u'[' || m_line[end] == u']')
                inSet = m_line[end] == u'[';
        }
        m_noRegexLeft = end >= m_line.size();
        if (m_noRegexLeft)
            return false;
        const qsizetype from = m_at;
        for (m_at = end + 1; at(m_at).isLetter(); ++m_at) {
        }
        add(from, CodeToken::string);
        return true;
    }

    bool number()
    {
        const bool begins =
            at(m_at).isDigit() || (at(m_at) == u'.' && at(m_at - 1) != u'.' && at(m_at + 1).isDigit());
        if (!begins)
            return false;
        const qsizetype from = m_at;
        const bool hexadecimal = stands(u"0x", m_at) || stands(u"0X", m_at);
        while (m_at < m_line.size()) {
            const QChar c = m_line[m_at];
            const bool power = !hexadecimal && (c == u'e' || c == u'E') &&
                               (at(m_at + 1) == u'-' || at(m_at + 1) == u'+') && at(m_at + 2).isDigit();
            const bool joins = (c == u'.' || c == u'\'') && at(m_at + 1).isLetterOrNumber();
            if (power)
                m_at += 2;
            else if (isWordCharacter(c) || (joins && (hexadecimal || at(m_at + 1).isDigit())))
                ++m_at;
            else
                break;
        }
        add(from, CodeToken::number);
        return true;
    }

    bool word()
    {
        const qsizetype from = m_at;
        const QChar first = m_line[from];
        const bool sigil = m_grammar.sigils.contains(first) && isWordCharacter(at(from + 1));
        const bool directive = m_grammar.preprocessor && first == u'#' && from == m_begin;
        if (!sigil && !directive && !first.isLetter() && first != u'_')
            return false;
        const auto belongs = [&](QChar c) {
            const bool minus = first == u'$' && c == u'-';
            return isWordCharacter(c) || (!minus && m_grammar.wordCharacters.contains(c));
        };
        for (++m_at; m_at < m_line.size() && belongs(m_line[m_at]); ++m_at) {
        }
        if (sigil)
            add(from, CodeToken::name);
        else if (directive)
            add(from, CodeToken::keyword);
        else
            nameWord(from);
        return true;
    }

    void nameWord(qsizetype from)
    {
        const QStringView word = m_line.sliced(from, m_at - from);
        const auto known = knownToken(word);
        const bool isPart = (at(from - 1) == u'.' && at(from - 2) != u'.') ||
                            (at(from - 1) == u'-' && m_grammar.wordCharacters.contains(u'-'));
        const bool isCalled = at(m_at) == u'(' ||
                              (at(m_at) == u'!' && u"([{"_s.contains(at(m_at + 1)) && !at(m_at + 1).isNull());
        const bool isCapital =
            m_grammar.capitalTypes && word[0].isUpper() &&
            (word.size() == 1 || std::any_of(word.begin(), word.end(), [](QChar c) { return c.isLower(); }));
        const bool stands = isKey(); // before a colon, whatever it is elsewhere
        if (!stands && known && !isPart)
            add(from, *known);
        else if (!stands && isCapital)
            add(from, CodeToken::type);
        else if (stands || isCalled)
            add(from, CodeToken::name);
    }

    [[nodiscard]] std::optional<CodeToken> knownToken(QStringView word) const
    {
        if (word.size() > m_language.m_longestWord)
            return std::nullopt;
        const QString key = m_grammar.ignoresCase ? word.toString().toLower() : word.toString();
        const auto found = m_language.m_words.constFind(key);
        return found == m_language.m_words.cend() ? std::nullopt : std::optional(*found);
    }

    // Whether what ends here stands before a colon.
    [[nodiscard]] bool isKey() const
    {
        qsizetype next = m_at;
        while (m_grammar.keys && isBlank(at(next)))
            ++next;
        return m_grammar.keys && at(next) == u':' && at(next + 1) != u'/';
    }

    const GrammarLanguage &m_language;
    const CodeGrammar &m_grammar;
    QStringView m_line;
    qsizetype m_begin = 0; // behind the blanks
    qsizetype m_at = 0;
    int m_here = start;
    bool m_noRegexLeft = false; // a search for its end came to the line's end
    Line m_result;
};

GrammarLanguage::GrammarLanguage(const CodeGrammar &grammar)
    : m_grammar(grammar)
{
    const auto addWords = [this](QStringView words, CodeToken token) {
        for (const QStringView word : words.split(u' ', Qt::SkipEmptyParts)) {
            m_words.insert(word.toString(), token);
            m_longestWord = std::max(m_longestWord, word.size());
        }
    };
    addWords(grammar.types, CodeToken::type);
    addWords(grammar.keywords, CodeToken::keyword);
}

CodeLanguage::Line GrammarLanguage::read(QStringView line, int state) const
{
    return Reader(*this, line).read(state);
}

} // namespace morvane
