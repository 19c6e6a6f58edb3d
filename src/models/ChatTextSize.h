#pragma once

#include "models/RawText.h"

#include <array>

namespace morvane {

// Display size of the chat.
enum class ChatTextSize { small, medium, large };

template <>
inline constexpr std::array rawTexts<ChatTextSize>{QLatin1StringView("small"), QLatin1StringView("medium"),
                                                   QLatin1StringView("large")};

} // namespace morvane
