#pragma once

#include "markdown/Block.h"

#include <variant>

// Reads text without fences line by line and gives its blocks. A value: a copy reads on by itself.
class TextBlockReader {
public:
    // A line without its line end.
    void addLine(QStringView line);
    // Ends the block that is open.
    void flush();

    // The blocks that have ended since the last call. What a line adds to the open block shows once it ends.
    [[nodiscard]] MarkdownRenderer::Blocks takeBlocks();

private:
    // Lines as they were written, joined by line feeds.
    struct OpenParagraph {
        QString lines;
        qsizetype lastLineStart = 0;
    };
    struct OpenQuote {
        QString lines;
    };
    struct OpenTable {
        MarkdownRenderer::Table table;
        qsizetype length = 0;  // of its lines
        qsizetype padding = 0; // cells that no line gave
    };
    using Open = std::variant<std::monostate, OpenParagraph, OpenQuote, MarkdownRenderer::BulletList,
                              MarkdownRenderer::NumberedList, OpenTable>;

    // The open block of that kind; another one ends, and a new one begins.
    template <typename Kind>
    Kind &open();
    [[nodiscard]] bool continuesTable(QStringView trimmed);
    [[nodiscard]] bool beginsTable(QStringView trimmed);
    void addWords(QStringView line);

    Open m_open;
    MarkdownRenderer::Blocks m_blocks;
};
