#pragma once

#include "models/RawText.h"

#include <array>
#include <chrono>
#include <optional>

namespace morvane {

// How long a conversation stays after its last change.
enum class ConversationRetention { forever, ninetyDays, thirtyDays, sevenDays };

template <>
inline constexpr std::array rawTexts<ConversationRetention>{
    QLatin1StringView("forever"), QLatin1StringView("ninetyDays"), QLatin1StringView("thirtyDays"),
    QLatin1StringView("sevenDays")};

// Nothing means that nothing is ever pruned.
[[nodiscard]] constexpr std::optional<std::chrono::seconds> retentionInterval(ConversationRetention retention)
{
    using std::chrono::days;
    switch (retention) {
    case ConversationRetention::forever:
        return std::nullopt;
    case ConversationRetention::ninetyDays:
        return days(90);
    case ConversationRetention::thirtyDays:
        return days(30);
    case ConversationRetention::sevenDays:
        return days(7);
    }
    return std::nullopt;
}

} // namespace morvane
