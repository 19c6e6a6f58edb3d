#pragma once

#include "markdown/Block.h"
#include "markdown/LineGrammar.h"

namespace morvane {

// The lines of a chart, and what their values amount to.
namespace ChartValues {

// As a line of any card, but a time at its start, such as "09:30: 5", is part of the label.
[[nodiscard]] std::optional<LineGrammar::LabelValue> labelValue(QStringView line);

// The number made of the digits, points and hyphens of a value such as "$60,123"; nothing when they make
// none.
[[nodiscard]] std::optional<double> number(QStringView value);

// Gives each point the size that stands with its number, "1.2M" or "3 bn", and the sign, so that they
// compare. Letters that belong to units, such as the "B" beside "KB", are no sizes.
void scale(QList<MarkdownRenderer::ChartPoint> &points);

} // namespace ChartValues

} // namespace morvane
