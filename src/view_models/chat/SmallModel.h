#pragma once

#include "ai/routing/ChatSource.h"

namespace morvane {

// What the composer says where a small model answers.
namespace SmallModel {

// Empty where it isn't known to be one: a model nearby whose name tells of fewer than 16 thousand million
// parameters.
[[nodiscard]] QString noticeFor(const ChatSource &source);

} // namespace SmallModel

} // namespace morvane
