#pragma once

#include "markdown/Block.h"

#include <variant>

namespace morvane {

// Reads text without fences line by line. Blocks are put behind `ended` once they have ended; what a line
// adds to the open block shows only then. A value: a copy reads on by itself.
class TextBlockReader {
public:
    // A line without its line end.
    void addLine(QStringView line, MarkdownRenderer::Blocks &ended);
    // Ends the block that is open.
    void flush(MarkdownRenderer::Blocks &ended);

private:
    // Lines as they were written, joined by line feeds.
    struct OpenParagraph {
        QString lines;
        qsizetype lastLineStart = 0;
    };
    struct OpenQuote {
        QString lines;
    };
    struct OpenList {
        QList<MarkdownRenderer::ListItem> items;
        QList<int> indents; // of the last item and of those that it stands under
    };
    struct OpenTable {
        MarkdownRenderer::Table table;
        qsizetype length = 0;  // of its lines
        qsizetype padding = 0; // cells that no line gave
    };
    using Open = std::variant<std::monostate, OpenParagraph, OpenQuote, OpenList, OpenTable>;

    // The open block of that kind; another one ends, and a new one begins.
    template <typename Kind>
    Kind &open(MarkdownRenderer::Blocks &ended);
    [[nodiscard]] bool continuesTable(QStringView trimmed);
    [[nodiscard]] bool beginsTable(QStringView trimmed, MarkdownRenderer::Blocks &ended);
    void addItem(int indent, MarkdownRenderer::ListItem item, MarkdownRenderer::Blocks &ended);
    void addWords(QStringView line, MarkdownRenderer::Blocks &ended);

    Open m_open;
};

} // namespace morvane
