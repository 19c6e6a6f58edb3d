// Any text as a reply: blocks come out whole, the same ones when it streams in, and a voice gets its words.

#include "fuzz/Fuzz.h"

#include "markdown/MarkdownRenderer.h"
#include "markdown/StreamingMarkdown.h"

#include <algorithm>

namespace morvane {

namespace {

void check(const AttributedText &text)
{
    qsizetype end = 0;
    for (const AttributedText::Run &run : text.runs) {
        require(run.start >= end && run.length > 0 && run.start + run.length <= text.text.size());
        require(run.link.isEmpty() || run.link.startsWith(QLatin1StringView("http")));
        end = run.start + run.length;
    }
}

} // namespace

void fuzz(QByteArrayView input)
{
    if (input.isEmpty())
        return;
    const QString text = QString::fromUtf8(input.sliced(1));
    for (const auto &block : MarkdownRenderer::parse(text)) {
        if (const auto *paragraph = std::get_if<MarkdownRenderer::Paragraph>(&block))
            check(paragraph->text);
        if (const auto *table = std::get_if<MarkdownRenderer::Table>(&block))
            require(std::all_of(table->rows.begin(), table->rows.end(),
                                [&](const auto &row) { return row.size() == table->headers.size(); }));
    }
    StreamingMarkdown streaming;
    const qsizetype pieceSize = 1 + static_cast<uchar>(input[0]) % 8;
    for (qsizetype at = 0; at < text.size(); at += pieceSize) {
        streaming.append(QStringView(text).sliced(at, std::min(pieceSize, text.size() - at)));
        require(streaming.blocks() == MarkdownRenderer::parse(streaming.text()));
    }
    static_cast<void>(MarkdownRenderer::speakable(text, MarkdownRenderer::CodeInSpeech::announced));
}

} // namespace morvane
