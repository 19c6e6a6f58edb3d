// Any text as a reply: blocks come out whole, the same ones when it streams in, and a voice gets its words.

#include "markdown/MarkdownRenderer.h"
#include "markdown/StreamingMarkdown.h"

#include <cstdint>
#include <cstdlib>

namespace morvane {

namespace {

void check(const AttributedText &text)
{
    qsizetype end = 0;
    for (const AttributedText::Run &run : text.runs) {
        const bool inOrder = run.start >= end && run.length > 0 && run.start + run.length <= text.text.size();
        if (!inOrder || !(run.link.isEmpty() || run.link.startsWith(QLatin1StringView("http"))))
            std::abort();
        end = run.start + run.length;
    }
}

void check(const MarkdownRenderer::Block &block)
{
    if (const auto *paragraph = std::get_if<MarkdownRenderer::Paragraph>(&block))
        check(paragraph->text);
    if (const auto *table = std::get_if<MarkdownRenderer::Table>(&block)) {
        for (const auto &row : table->rows) {
            if (row.size() != table->headers.size())
                std::abort();
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char *>(data) + 1, static_cast<qsizetype>(size) - 1);
    const MarkdownRenderer::Blocks blocks = MarkdownRenderer::parse(text);
    for (const auto &block : blocks)
        check(block);
    StreamingMarkdown streaming;
    const qsizetype pieceSize = 1 + data[0] % 8;
    for (qsizetype at = 0; at < text.size(); at += pieceSize) {
        streaming.append(QStringView(text).sliced(at, std::min(pieceSize, text.size() - at)));
        if (streaming.blocks() != MarkdownRenderer::parse(streaming.text()))
            std::abort();
    }
    static_cast<void>(MarkdownRenderer::speakable(text, MarkdownRenderer::CodeInSpeech::announced));
    return 0;
}

} // namespace morvane
