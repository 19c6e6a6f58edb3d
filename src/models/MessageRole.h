#pragma once

#include "models/RawText.h"

#include <array>

namespace morvane {

// Who speaks in a stored message.
enum class MessageRole { user, assistant, system };

template <>
inline constexpr std::array rawTexts<MessageRole>{QLatin1StringView("user"), QLatin1StringView("assistant"),
                                                  QLatin1StringView("system")};

} // namespace morvane
