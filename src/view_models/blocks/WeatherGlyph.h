#pragma once

#include <QString>

namespace morvane {

// Which of our drawings goes with a weather condition, told by the words that reports use.
namespace WeatherGlyph {

// The name of a drawing: "weather-storm", "weather-snow", … A condition of unknown words is cloudy.
[[nodiscard]] QString of(const QString &condition);

} // namespace WeatherGlyph

} // namespace morvane
