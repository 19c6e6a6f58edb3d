#pragma once

#include "markdown/TextBlockReader.h"

// Reads a reply line by line and gives its blocks: text as it stands, and what is fenced by "```". A value: a
// copy reads on by itself.
class BlockReader {
public:
    struct OpenFence {
        std::optional<QString> language;
        QString code; // the lines so far, joined by line feeds
        bool hasLines = false;
    };

    // A line without its line end.
    void addLine(QStringView line);
    // Ends what is open, an unclosed fence too.
    void finish();

    // The blocks that have ended since the last call.
    [[nodiscard]] MarkdownRenderer::Blocks takeBlocks();

    [[nodiscard]] const std::optional<OpenFence> &openFence() const { return m_fence; }

private:
    void openAt(QStringView before, QStringView behind);
    void closeAt(QStringView before, QStringView behind);
    void addCode(QStringView line);
    void endFence();

    TextBlockReader m_text;
    std::optional<OpenFence> m_fence;
    MarkdownRenderer::Blocks m_blocks;
};
