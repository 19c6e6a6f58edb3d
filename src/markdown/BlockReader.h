#pragma once

#include "markdown/LineGrammar.h"
#include "markdown/TextBlockReader.h"

namespace morvane {

// Reads a reply line by line: text as it stands, and what is fenced by "```" or "~~~". Blocks are put behind
// `ended` once they have ended. A value: a copy reads on by itself.
class BlockReader {
public:
    // All of a text. Keeps nothing, so any thread may read, where the renderer is for the main thread.
    [[nodiscard]] static MarkdownRenderer::Blocks read(QStringView text);

    // A line without its line end.
    void addLine(QStringView line, MarkdownRenderer::Blocks &ended);
    // Ends what is open, an unclosed fence too.
    void finish(MarkdownRenderer::Blocks &ended);

    [[nodiscard]] bool isInFence() const { return m_fence.has_value(); }
    // What the open fence consists of.
    [[nodiscard]] QChar fenceMark() const { return m_fence ? m_fence->mark.mark : QChar(); }
    // Whether the open fence stands in a quote or an item: what is theirs at a line's start isn't code.
    [[nodiscard]] bool shortensCode() const
    {
        return m_fence && (m_fence->quotes > 0 || m_fence->indent > 0);
    }

private:
    struct OpenFence {
        LineGrammar::Fence mark;
        int quotes = 0; // marks that each line of code begins with
        int indent = 0; // columns that each line of code begins with, behind those
        std::optional<QString> language;
        std::optional<QString> code; // the lines so far, joined by line feeds
    };

    void open(const LineGrammar::Fence &fence, QStringView line, MarkdownRenderer::Blocks &ended);
    void addFencedLine(QStringView line, MarkdownRenderer::Blocks &ended);
    void addCode(QStringView line);
    void endFence(MarkdownRenderer::Blocks &ended);

    TextBlockReader m_text;
    std::optional<OpenFence> m_fence;
};

} // namespace morvane
