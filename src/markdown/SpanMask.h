#pragma once

#include <QList>
#include <QString>

namespace morvane {

// A text in the form in which a parser of spans reads it as a person would. Characters that it would take for
// something else give way to stand-ins, one for each UTF-16 unit.
namespace SpanMask {

struct Stretch {
    qsizetype start = 0;
    qsizetype length = 0;
};

struct Masked {
    QString text;
    QList<Stretch> formulas; // between \( \), \[ \] or $$, these marks included; in order
};

// Formulas, the backslashes before parentheses and the brackets of footnote marks mean nothing. Emphasis that
// begins or ends beside Chinese, Japanese or Korean needs no space there.
[[nodiscard]] Masked of(QStringView text);

// Whether there may be anything to mask, in most texts not.
[[nodiscard]] bool isNeeded(QStringView text);

// Whether what stands between two "$$" is a formula, and not words between two price ranges.
[[nodiscard]] bool looksLikeFormula(QStringView text);

} // namespace SpanMask

} // namespace morvane
