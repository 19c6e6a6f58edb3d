#pragma once

#include <QString>

namespace morvane {

// Which of our drawings goes with a weather condition, told by the words that reports use in the languages
// that most people here read.
namespace WeatherGlyph {

// The name of a drawing: "weather-storm", "weather-snow", … Empty for a condition of unknown words.
[[nodiscard]] QString of(const QString &condition);

} // namespace WeatherGlyph

} // namespace morvane
