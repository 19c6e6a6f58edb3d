#pragma once

#include "markdown/TextBlockReader.h"

namespace morvane {

// Reads a reply line by line: text as it stands, and what is fenced by "```". Blocks are put behind `ended`
// once they have ended. A value: a copy reads on by itself.
class BlockReader {
public:
    // A line without its line end.
    void addLine(QStringView line, MarkdownRenderer::Blocks &ended);
    // Ends what is open, an unclosed fence too.
    void finish(MarkdownRenderer::Blocks &ended);

    [[nodiscard]] bool isInFence() const { return m_fence.has_value(); }

private:
    struct OpenFence {
        std::optional<QString> language;
        std::optional<QString> code; // the lines so far, joined by line feeds
    };

    void openAt(QStringView before, QStringView behind, MarkdownRenderer::Blocks &ended);
    void closeAt(QStringView before, QStringView behind, MarkdownRenderer::Blocks &ended);
    void addCode(QStringView line);
    void endFence(MarkdownRenderer::Blocks &ended);

    TextBlockReader m_text;
    std::optional<OpenFence> m_fence;
};

} // namespace morvane
