#pragma once

#include <cstdint>
#include <vector>

namespace morvane {

// The short sound that says that the person may speak: a tone that falls and dies away in a tenth of a
// second.
namespace PopSound {

// As AudioQueue has it.
[[nodiscard]] std::vector<std::int16_t> samples();

} // namespace PopSound

} // namespace morvane
