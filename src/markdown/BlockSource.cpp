#include "markdown/BlockSource.h"

#include "markdown/BlockReader.h"
#include "markdown/LineGrammar.h"

#include <algorithm>

namespace morvane {

using namespace MarkdownRenderer;

namespace {

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

// A reader tells a block's end from a line of it, such as a closing fence, from the line behind it, or where
// that begins a table from the second one behind it. So the stretch that gives the very blocks is one of a few.
QString exact(const QList<QStringView> &lines, Stretch about, const Blocks &wanted)
{
    const qsizetype count = lines.size();
    for (qsizetype to = std::min(about.to + 1, count); to >= about.to - 1; --to) {
        for (qsizetype from = std::max<qsizetype>(about.from - 1, 0); from <= about.from + 1; ++from) {
            QString text = joined(lines, {from, to});
            if (from < to && BlockReader::read(text) == wanted)
                return text;
        }
    }
    return joined(lines, about); // such as items that count on from others
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
    const Stretch about{first == 0 ? 0 : ends[first - 1], ends[last]};
    QString source = exact(lines, about, blocks.sliced(first, last - first + 1));
    const auto isWritten = [](QChar c) { return !LineGrammar::isNewline(c); };
    const auto start = std::find_if(source.cbegin(), source.cend(), isWritten) - source.cbegin();
    const auto behind = std::find_if(source.crbegin(), source.crend(), isWritten) - source.crbegin();
    return start == source.size() ? QString() : source.sliced(start, source.size() - start - behind);
}

} // namespace morvane
