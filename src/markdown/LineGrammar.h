#pragma once

#include <QList>
#include <QStringList>
#include <QStringView>

#include <optional>

namespace morvane {

// What one line of a reply is, judged by the line alone. Lines are given without their line end and trimmed
// by `trimmed`.
namespace LineGrammar {

// Without white space at both ends; a carriage return before a line feed counts as such.
[[nodiscard]] QStringView trimmed(QStringView line);

// Columns of white space at its start; a tab counts as four.
[[nodiscard]] int indentation(QStringView line);
// Without that many columns of white space at its start, or as many as it has.
[[nodiscard]] QStringView withoutIndentation(QStringView line, int columns);

[[nodiscard]] bool isNewline(QChar character);

struct HeadingLine {
    int level;
    QStringView text;
};
[[nodiscard]] std::optional<HeadingLine> heading(QStringView line);

[[nodiscard]] bool isDivider(QStringView line);

// The words behind the mark.
[[nodiscard]] std::optional<QStringView> quote(QStringView line);
[[nodiscard]] std::optional<QStringView> bulletItem(QStringView line);
struct NumberedLine {
    int number; // 0 to 999
    QStringView text;
};
[[nodiscard]] std::optional<NumberedLine> numberedItem(QStringView line);

// How many characters lead up to an item's words, of either kind; 0 for no item.
[[nodiscard]] qsizetype itemWords(QStringView line);

struct TaskWords {
    bool done;
    QStringView text; // not empty
};
// The words of an item behind a task mark, "[ ]" or "[x]".
[[nodiscard]] std::optional<TaskWords> task(QStringView item);
// Whether more words may make a task of an item that is none yet.
[[nodiscard]] bool mayBecomeTask(QStringView item);

// Between "|" at both ends.
[[nodiscard]] bool isTableRow(QStringView line);
[[nodiscard]] bool isSeparatorRow(QStringView line);
// The same for two columns or more, with or without "|" at the ends.
[[nodiscard]] bool isOpenSeparatorRow(QStringView line);
// The cells of a table row, trimmed. "\|" is a "|" of a cell, and so is one in code.
[[nodiscard]] QStringList tableCells(QStringView row);

struct Fence {
    qsizetype start = 0;
    qsizetype length = 0; // 3 or more
    QChar mark;
};
// The first run of "`" anywhere in the line, or one of "~" at the start of it or of what it quotes.
[[nodiscard]] std::optional<Fence> openingFence(QStringView line);
// The length of the run at the start of the line that ends what such a fence opened; nothing when none does.
[[nodiscard]] std::optional<qsizetype> closingFence(QStringView line, const Fence &opening);

constexpr int mostQuoteMarks = 8;

struct QuotedLine {
    int depth; // how many ">" were taken off
    QStringView text;
};
// Takes up to that many ">" off a line's start, each with the space behind it.
[[nodiscard]] QuotedLine withoutQuoteMarks(QStringView line, int most);

// Whether it holds a digit and few letters, as a number with a unit does.
[[nodiscard]] bool looksNumeric(QStringView text);

// The parts between "|", trimmed.
[[nodiscard]] QStringList parts(QStringView line);

struct LabelValue {
    QString label;
    QString value;
};
// Two parts around the first "|", else around the first ":". Nothing when one of them is empty.
[[nodiscard]] std::optional<LabelValue> labelValue(QStringView line);

} // namespace LineGrammar

} // namespace morvane
