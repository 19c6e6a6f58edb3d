#include "markdown/BlockSource.h"

#include "markdown/BlockReader.h"
#include "markdown/LineGrammar.h"

#include <algorithm>
#include <optional>

namespace morvane {

using namespace MarkdownRenderer;

namespace {

constexpr qsizetype mostNeighbours = 3; // words before a fence, the code, and words behind it

struct Stretch {
    qsizetype from = 0; // lines
    qsizetype to = 0;   // behind the last one
};

QString joined(const QList<QStringView> &lines, Stretch part)
{
    QString text;
    for (qsizetype i = part.from; i < part.to; ++i)
        text += lines[i].toString() + u'\n';
    return text;
}

bool haveSameKinds(const Blocks &left, const Blocks &right)
{
    return std::ranges::equal(left, right, {}, &Block::index, &Block::index);
}

// A reader tells a block's end from a line of it, such as a closing fence, from the line behind it, or where
// that begins a table from the second one behind it. So the stretch that gives the very blocks is one of a
// few.
std::optional<QString> linesThatGive(const Blocks &wanted, const QList<QStringView> &lines, Stretch about)
{
    std::optional<QString> alike; // such as items that count on from others
    for (qsizetype to = std::min(about.to + 1, lines.size()); to >= about.to - 1; --to) {
        for (qsizetype from = std::max<qsizetype>(about.from - 1, 0); from <= about.from + 1; ++from) {
            const QString text = joined(lines, {from, to});
            const Blocks read = BlockReader::read(text);
            if (read == wanted)
                return text;
            if (!alike && haveSameKinds(read, wanted))
                alike = text;
        }
    }
    return alike;
}

} // namespace

QString BlockSource::of(const QString &text, qsizetype first, qsizetype last)
{
    QList<QStringView> lines;
    for (const QStringView line : QStringView(text).tokenize(u'\n'))
        lines.append(line);
    BlockReader reader;
    Blocks blocks;
    QList<qsizetype> ends; // of each block, the line that told
    for (qsizetype i = 0; i <= lines.size(); ++i) {
        if (i < lines.size())
            reader.addLine(lines[i], blocks);
        else
            reader.finish(blocks);
        ends.resize(blocks.size(), i);
    }
    last = std::min(last, blocks.size() - 1);
    if (first < 0 || first > last)
        return {};
    const auto sourceOf = [&](qsizetype from, qsizetype to) {
        return linesThatGive(blocks.sliced(from, to - from + 1), lines,
                             {from == 0 ? 0 : ends[from - 1], ends[to]});
    };
    std::optional<QString> found;
    for (qsizetype more = 0; !found && more <= mostNeighbours; ++more) {
        for (qsizetype before = 0; !found && before <= more; ++before)
            found = sourceOf(std::max<qsizetype>(first - before, 0),
                             std::min(last + more - before, blocks.size() - 1));
    }
    const QString source = found.value_or(text);
    const auto isWritten = [](QChar c) { return !LineGrammar::isNewline(c); };
    const auto start = std::find_if(source.cbegin(), source.cend(), isWritten) - source.cbegin();
    const auto rest = std::find_if(source.crbegin(), source.crend(), isWritten) - source.crbegin();
    return start == source.size() ? QString() : source.sliced(start, source.size() - start - rest);
}

} // namespace morvane
