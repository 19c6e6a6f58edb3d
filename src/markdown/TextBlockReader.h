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
    // Whether a line with so much space at its start stands inside a list's item. One that doesn't ends the
    // items that it stands beside.
    bool staysInItem(int indent);

private:
    // Lines as they were written, joined by line feeds.
    struct OpenParagraph {
        QString lines;
        qsizetype lastLineStart = 0;
    };
    struct OpenQuote {
        QString lines;
    };
    // Of the numbered items in a row.
    struct Count {
        int written = 0; // the last one
        int shown = 0;
        bool isLazy = false; // the writer repeats a number and leaves the counting to the reader
    };
    struct OpenList {
        QList<MarkdownRenderer::ListItem> items;
        QList<std::optional<Count>> counts; // at each depth
    };
    struct OpenFormula {
        QString opening;
        QString lines;
        int indent = 0;
    };
    struct OpenTable {
        MarkdownRenderer::Table table;
        bool framed = true;    // each line between "|"
        qsizetype length = 0;  // of its lines
        qsizetype padding = 0; // cells that no line gave
    };
    using Open = std::variant<std::monostate, OpenParagraph, OpenQuote, OpenList, OpenTable, OpenFormula>;

    // The open block of that kind; another one ends, and a new one begins.
    template <typename Kind>
    Kind &open(MarkdownRenderer::Blocks &ended);
    [[nodiscard]] bool continuesTable(QStringView trimmed);
    [[nodiscard]] bool beginsTable(QStringView trimmed, MarkdownRenderer::Blocks &ended);
    [[nodiscard]] bool continuesFormula(QStringView line, MarkdownRenderer::Blocks &ended);
    [[nodiscard]] bool beginsFormula(QStringView line, MarkdownRenderer::Blocks &ended);
    [[nodiscard]] static Count next(const std::optional<Count> &before, int written);
    void addItem(int indent, MarkdownRenderer::ListItem item, MarkdownRenderer::Blocks &ended);
    void addWords(QStringView line, MarkdownRenderer::Blocks &ended);

    Open m_open;
    // Of the last item and of those that it stands under. They are left by the first words beside them.
    QList<int> m_indents;
};

} // namespace morvane
