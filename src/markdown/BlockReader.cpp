#include "markdown/BlockReader.h"

#include "markdown/DataCards.h"
#include "markdown/LineGrammar.h"

#include <algorithm>

namespace morvane {

using namespace MarkdownRenderer;

namespace {

constexpr qsizetype fenceLength = 3;

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

void BlockReader::addLine(QStringView line, Blocks &ended)
{
    const QStringView words = LineGrammar::trimmed(line);
    const qsizetype at = LineGrammar::fence(words);
    if (at >= 0) {
        const QStringView before = LineGrammar::trimmed(words.first(at));
        const QStringView behind = LineGrammar::trimmed(words.sliced(at + fenceLength));
        m_fence ? closeAt(before, behind, ended) : openAt(before, behind, ended);
    } else if (m_fence) {
        addCode(line);
    } else {
        m_text.addLine(line, ended);
    }
}

void BlockReader::openAt(QStringView before, QStringView behind, Blocks &ended)
{
    if (!before.isEmpty())
        m_text.addLine(before, ended);
    m_text.flush(ended);
    m_fence.emplace();
    if (!behind.isEmpty())
        m_fence->language = behind.toString();
}

void BlockReader::closeAt(QStringView before, QStringView behind, Blocks &ended)
{
    if (!before.isEmpty())
        addCode(before);
    endFence(ended);
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
