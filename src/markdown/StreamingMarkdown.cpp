#include "markdown/StreamingMarkdown.h"

#include "markdown/DataCards.h"
#include "markdown/InlineMarkdown.h"
#include "markdown/LineGrammar.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace MarkdownRenderer;

namespace {

// The text at the end of a block, where more words would stand; null for a card.
struct LastWords {
    QString *operator()(Paragraph &block) const { return &block.text.text; }
    QString *operator()(Heading &block) const { return &block.text.text; }
    QString *operator()(Quote &block) const { return &block.text.text; }
    QString *operator()(BulletList &block) const { return &block.items.last().text.text; }
    QString *operator()(NumberedList &block) const { return &block.items.last().text.text; }
    QString *operator()(Code &block) const { return &block.text; }
    template <typename Card>
    QString *operator()(Card &) const
    {
        return nullptr;
    }
};

bool isSpace(QChar character)
{
    return character.isSpace();
}

// How many characters of that kind stand at the end.
template <bool (*isKind)(QChar)>
qsizetype trailing(QStringView text)
{
    return std::find_if_not(text.rbegin(), text.rend(), [](QChar c) { return isKind(c); }) - text.rbegin();
}

QStringView lastWord(QStringView line)
{
    return line.last(std::find_if(line.rbegin(), line.rend(), isSpace) - line.rbegin());
}

bool endsRow(QStringView line)
{
    const auto last = std::find_if_not(line.rbegin(), line.rend(), isSpace);
    return last != line.rend() && *last == u'|';
}

template <typename... Kinds>
bool holdsOneOf(const Block &block)
{
    return (std::holds_alternative<Kinds>(block) || ...);
}

// Blocks whose lines all make a text together: a word behind them is a word of theirs.
bool isProse(const Block &block)
{
    return holdsOneOf<Paragraph, Heading, BulletList, NumberedList, Quote>(block);
}

// Whether words put behind the line leave what it is, and what its spans are. A letter settles what a line
// is, as every mark of a line's start stands before it; but a row of a table is known by its end.
bool canGoOn(QStringView line)
{
    const QStringView words = LineGrammar::trimmed(line);
    const auto isLetter = [](QChar c) { return c.isLetter(); };
    return std::any_of(words.begin(), words.end(), isLetter) && !endsRow(words) &&
           InlineMarkdown::isInert(line.last(1)) && InlineMarkdown::isInert(words.last(1)) &&
           !lastWord(line).contains(QStringView(u"://")) &&
           !LineGrammar::mayBecomeTask(words.sliced(LineGrammar::itemWords(words)));
}

// Whether a line of code has more than what its place in an item or a quote begins it with.
bool holdsCode(QStringView line)
{
    return std::any_of(line.begin(), line.end(), [](QChar c) { return !c.isSpace() && c != u'>'; });
}

// Whether more lines can't make a card or a table of it.
bool staysCode(const Code &code)
{
    if (code.language)
        return !DataCards::isTyped(*code.language);
    const auto first = std::find_if_not(code.text.begin(), code.text.end(), isSpace);
    return first != code.text.end() && *first != u'|';
}

} // namespace

qsizetype StreamingMarkdown::setText(const QString &text)
{
    if (text.startsWith(m_text))
        return append(QStringView(text).sliced(m_text.size()));
    *this = {};
    m_text = text;
    return readAgain();
}

qsizetype StreamingMarkdown::append(QStringView piece)
{
    if (piece.isEmpty())
        return m_blocks.size();
    if (goesOn(piece)) {
        extend(piece);
        return m_blocks.size() - 1;
    }
    m_text += piece;
    return readAgain();
}

bool StreamingMarkdown::goesOn(QStringView piece) const
{
    switch (m_growth) {
    case Growth::none:
        return false;
    case Growth::words:
        return InlineMarkdown::isInert(piece) && std::find(piece.begin(), piece.end(), u'|') == piece.end();
    case Growth::code:
        // Line ends of other kinds than this one would be trimmed from the end too.
        return std::all_of(piece.begin(), piece.end(), [this](QChar c) {
            return c != m_reader.fenceMark() && ((c == u'\n' && !m_reader.shortensCode()) || c == u' ' ||
                                                 c == u'\t' || (c.isPrint() && !c.isSpace()));
        });
    }
    Q_UNREACHABLE();
}

void StreamingMarkdown::extend(QStringView piece)
{
    m_text += piece;
    m_withheld += piece.size();
    const qsizetype withheld = withheldOf(piece);
    if (withheld == piece.size())
        return;
    QString &words = *std::visit(LastWords{}, m_blocks.last());
    words += QStringView(m_text).last(m_withheld).chopped(withheld);
    m_withheld = withheld;
}

qsizetype StreamingMarkdown::withheldOf(QStringView text) const
{
    return m_growth == Growth::code ? trailing<LineGrammar::isNewline>(text) : trailing<isSpace>(text);
}

QStringView StreamingMarkdown::openLine() const
{
    return QStringView(m_text).sliced(m_read);
}

qsizetype StreamingMarkdown::readAgain()
{
    const qsizetype kept = m_ended;
    m_blocks.remove(kept, m_blocks.size() - kept);
    for (qsizetype end = m_text.indexOf(u'\n', m_read); end >= 0; end = m_text.indexOf(u'\n', m_read)) {
        m_reader.addLine(QStringView(m_text).sliced(m_read, end - m_read), m_blocks);
        m_read = end + 1;
    }
    m_ended = m_blocks.size();

    BlockReader ahead = m_reader;
    ahead.addLine(openLine(), m_blocks);
    const bool holdsFence = ahead.isInFence() != m_reader.isInFence();
    ahead.finish(m_blocks);
    m_growth = holdsFence ? Growth::none : growth();
    m_withheld = withheldOf(m_text);
    return kept;
}

StreamingMarkdown::Growth StreamingMarkdown::growth() const
{
    if (m_blocks.size() == m_ended)
        return Growth::none;
    if (m_reader.isInFence()) {
        const auto *code = std::get_if<Code>(&m_blocks.last());
        const bool goesOn = code && staysCode(*code) && (!m_reader.shortensCode() || holdsCode(openLine()));
        return goesOn ? Growth::code : Growth::none;
    }
    return isProse(m_blocks.last()) && canGoOn(openLine()) ? Growth::words : Growth::none;
}

} // namespace morvane
