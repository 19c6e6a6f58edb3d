// What it costs to turn a reply into blocks: whole, beside a Markdown parser that does nothing with what it
// finds; and as it streams in, beside a plain pass over the same text, which no change of ours makes faster.
// A stream in pieces of four characters takes 28 to 32 times that pass where a parse of the whole takes 4 to
// 5 times; the aim of 35 leaves a tenth for a busy machine.

#include "markdown/MarkdownRenderer.h"
#include "markdown/StreamingMarkdown.h"

#include <benchmark/benchmark.h>
#include <md4c.h>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype answerLength = 20'000;
constexpr qsizetype pieceLength = 4; // about what a model writes at once

// A section of an answer as models write them: mostly words, some emphasis, a list, a table, a little code.
const QString section =
    u"## How the index is kept\n\nEvery write goes to the **log** first, and a background task folds the log "
    u"into "
    "the tree once it has grown past a few megabytes. That keeps a single write cheap, because it only "
    "appends, "
    "and it keeps reads honest, because a read looks at the log before it looks at the tree. The price is "
    "paid "
    "later and in large pieces, which disks like.\n\n"
    "There are three things to watch when you tune it:\n\n"
    "- **Log size**: a small log means many short merges, and a large one means slow starts after a crash.\n"
    "- **Merge threads**: more than two rarely help, since they wait for the same disk.\n"
    "- **Cache**: it should hold the upper levels of the tree, see the `cache_size` setting in the "
    "[manual](https://example.com/manual#cache).\n\n"
    "| Setting | Default | Effect |\n|---|---:|---|\n| log_size | 64 MB | merge interval |\n"
    "| threads | 2 | merge speed |\n\n"
    "In code the same looks like this, with the defaults written out so that you can see what you change:\n\n"
    "```cpp\nIndex index(path);\nindex.setLogSize(64 * MiB);\nindex.setThreads(2);\nfor (const auto &row : "
    "rows)\n"
    "    index.insert(row.key, row.value);\nindex.flush();\n```\n\n"
    "1. Measure before you change anything, with the load of an ordinary day.\n"
    "2. Change one setting, and measure again.\n"
    "3. Keep notes, as the numbers of last month are gone *sooner* than you think.\n\n"
    "> A faster disk is often cheaper than a cleverer setting.\n\n"
    "So start with the log, leave the rest alone until the numbers tell you otherwise, and come back to the "
    "cache only when reads are slow although the disk is idle. If they are slow while it is busy, the merges "
    "are in the way, and a second disk for the log helps more than any number in the table above.\n\n"_s;

const QString &answer()
{
    static const QString text = section.repeated(answerLength / section.size() + 1).first(answerLength);
    return text;
}

void count(benchmark::State &state)
{
    state.SetBytesProcessed(state.iterations() * answer().toUtf8().size());
}

void parse(benchmark::State &state)
{
    for (auto _ : state) {
        auto blocks = MarkdownRenderer::parse(answer());
        benchmark::DoNotOptimize(blocks);
    }
    count(state);
}

void bareParser(benchmark::State &state)
{
    const QByteArray utf8 = answer().toUtf8();
    MD_PARSER parser{};
    parser.flags = MD_FLAG_NOHTML | MD_FLAG_STRIKETHROUGH | MD_FLAG_TABLES | MD_FLAG_PERMISSIVEURLAUTOLINKS;
    parser.enter_block = [](MD_BLOCKTYPE, void *, void *) { return 0; };
    parser.leave_block = parser.enter_block;
    parser.enter_span = [](MD_SPANTYPE, void *, void *) { return 0; };
    parser.leave_span = parser.enter_span;
    parser.text = [](MD_TEXTTYPE, const MD_CHAR *, MD_SIZE, void *) { return 0; };
    for (auto _ : state)
        benchmark::DoNotOptimize(
            md_parse(utf8.constData(), static_cast<MD_SIZE>(utf8.size()), &parser, nullptr));
    count(state);
}

// The least that a reader of lines does: a copy of each line and a look at each of its characters.
void plainPass(benchmark::State &state)
{
    for (auto _ : state) {
        QStringList lines;
        qsizetype marks = 0;
        for (const QStringView line : QStringView(answer()).tokenize(u'\n')) {
            lines.append(line.toString());
            for (const QChar c : line)
                marks += c == u'*' || c == u'`' || c == u'[' || c == u'|' || c == u'_' ? 1 : 0;
        }
        benchmark::DoNotOptimize(lines);
        benchmark::DoNotOptimize(marks);
    }
    count(state);
}

void stream(benchmark::State &state)
{
    for (auto _ : state) {
        StreamingMarkdown streaming;
        for (qsizetype at = 0; at < answerLength; at += pieceLength)
            benchmark::DoNotOptimize(streaming.append(QStringView(answer()).sliced(at, pieceLength)));
    }
    count(state);
}

} // namespace

int main(int argc, char **argv)
{
    benchmark::RegisterBenchmark("markdown_parse", parse);
    benchmark::RegisterBenchmark("markdown_parse/yardstick", bareParser);
    benchmark::RegisterBenchmark("markdown_stream", stream);
    benchmark::RegisterBenchmark("markdown_stream/yardstick", plainPass);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
