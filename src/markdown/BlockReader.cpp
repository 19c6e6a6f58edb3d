#include "markdown/BlockReader.h"

#include "markdown/DataCards.h"
#include "markdown/LineGrammar.h"

#include <algorithm>

namespace morvane {

using namespace MarkdownRenderer;

namespace {

QStringView withoutOuterNewlines(QStringView text)
{
    const auto first = std::find_if_not(text.begin(), text.end(), LineGrammar::isNewline) - text.begin();
    qsizetype last = text.size();
    while (last > first && LineGrammar::isNewline(text[last - 1]))
        --last;
    return text.sliced(first, last - first);
}

Block blockOf(const std::optional<QString> &language, QStringView code)
{
    if (language) {
        if (auto card = DataCards::card(*language, code))
            return *std::move(card);
    }
    if (!language || DataCards::isTyped(*language)) {
        if (auto table = DataCards::table(code))
            return *std::move(table);
    }
    return Code{code.toString(), language};
}

} // namespace

Blocks BlockReader::read(QStringView text)
{
    BlockReader reader;
    Blocks blocks;
    for (const QStringView line : text.tokenize(u'\n'))
        reader.addLine(line, blocks);
    reader.finish(blocks);
    return blocks;
}

void BlockReader::addLine(QStringView line, Blocks &ended)
{
    if (m_fence)
        addFencedLine(line, ended);
    else if (const auto fence = LineGrammar::openingFence(LineGrammar::trimmed(line)))
        open(*fence, line, ended);
    else
        m_text.addLine(line, ended);
}

void BlockReader::open(const LineGrammar::Fence &fence, QStringView line, Blocks &ended)
{
    const QStringView words = LineGrammar::trimmed(line);
    const QStringView before = LineGrammar::trimmed(words.first(fence.start));
    const QStringView behind = LineGrammar::trimmed(words.sliced(fence.start + fence.length));
    const auto quoted = LineGrammar::withoutQuoteMarks(before, LineGrammar::mostQuoteMarks);
    const qsizetype itemStart = LineGrammar::itemWords(words);
    const int indent = LineGrammar::indentation(line);
    if (itemStart > 0)
        m_text.addLine(line.first(line.indexOf(before) + before.size()), ended); // stands where it stood
    else if (!before.isEmpty() && !(quoted.depth > 0 && LineGrammar::trimmed(quoted.text).isEmpty()))
        m_text.addLine(before, ended);
    m_text.flush(ended);
    OpenFence opened{.mark = fence, .quotes = quoted.depth, .indent = 0, .language = {}, .code = {}};
    if (itemStart > 0)
        opened.indent = indent + static_cast<int>(itemStart);
    else if (before.isEmpty() && m_text.staysInItem(indent))
        opened.indent = indent;
    if (!behind.isEmpty())
        opened.language = behind.toString();
    m_fence = std::move(opened);
}

void BlockReader::addFencedLine(QStringView line, Blocks &ended)
{
    line = LineGrammar::withoutQuoteMarks(line, m_fence->quotes).text;
    const QStringView words = LineGrammar::trimmed(line);
    const auto closing = LineGrammar::closingFence(words, m_fence->mark);
    if (!closing) {
        addCode(LineGrammar::withoutIndentation(line, m_fence->indent));
        return;
    }
    endFence(ended);
    const QStringView behind = LineGrammar::trimmed(words.sliced(*closing));
    if (!behind.isEmpty())
        m_text.addLine(behind, ended);
}

void BlockReader::addCode(QStringView line)
{
    if (m_fence->code)
        m_fence->code->append(u'\n').append(line);
    else
        m_fence->code = line.toString();
}

void BlockReader::endFence(Blocks &ended)
{
    const QString lines = m_fence->code.value_or(QString());
    const QStringView code = withoutOuterNewlines(lines);
    if (!code.isEmpty())
        ended.emplaceBack(blockOf(m_fence->language, code));
    m_fence.reset();
}

void BlockReader::finish(Blocks &ended)
{
    if (m_fence)
        endFence(ended);
    m_text.flush(ended);
}

} // namespace morvane
