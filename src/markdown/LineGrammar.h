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
[[nodiscard]] std::optional<QStringView> numberedItem(QStringView line);

[[nodiscard]] bool isTableRow(QStringView line);
[[nodiscard]] bool isSeparatorRow(QStringView line);
// The cells of a table row, trimmed.
[[nodiscard]] QList<QStringView> tableCells(QStringView row);

// Place of the first "```", or -1.
[[nodiscard]] qsizetype fence(QStringView line);

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
