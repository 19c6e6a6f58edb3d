#pragma once

#include "models/RawText.h"

#include <array>

// The life of one message.
enum class MessageStatus {
    Pending,   // a reply's placeholder; nothing has been asked for yet
    Streaming, // text is arriving
    Delivered, // final; every user message is created so
    Failed,    // the turn ended in an error, kept in the message's error text
    Cancelled, // stopped by the person
};

template <>
inline constexpr std::array rawTexts<MessageStatus>{
    QLatin1StringView("pending"), QLatin1StringView("streaming"), QLatin1StringView("delivered"),
    QLatin1StringView("failed"), QLatin1StringView("cancelled")};
