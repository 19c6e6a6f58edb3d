#pragma once

#include <QStringView>

namespace morvane {

// The words by which a small model gives itself away.
namespace ReplyPhrases {

// The reply declines to look something up.
[[nodiscard]] bool refusesSearch(QStringView reply);

// The reply says that something was put on the calendar, and doesn't merely offer to.
[[nodiscard]] bool claimsScheduling(QStringView reply);

} // namespace ReplyPhrases

} // namespace morvane
