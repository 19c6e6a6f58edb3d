#pragma once

#include "models/RawText.h"

#include <array>

namespace morvane {

// The life of one message.
enum class MessageStatus {
    pending,   // a reply's placeholder; nothing has been asked for yet
    streaming, // text is arriving
    delivered, // final; every user message is created so
    failed,    // the turn ended in an error, kept in the message's error text
    cancelled, // stopped by the person
};

template <>
inline constexpr std::array rawTexts<MessageStatus>{
    QLatin1StringView("pending"), QLatin1StringView("streaming"), QLatin1StringView("delivered"),
    QLatin1StringView("failed"), QLatin1StringView("cancelled")};

} // namespace morvane
