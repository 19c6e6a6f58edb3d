#pragma once

#include <QString>

namespace morvane {

namespace Help {

[[nodiscard]] QString text();

} // namespace Help

} // namespace morvane
