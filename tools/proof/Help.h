#pragma once

#include <QString>

namespace Help {

[[nodiscard]] QString text();

} // namespace Help
