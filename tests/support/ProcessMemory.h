#pragma once

#include <QtGlobal>

#include <functional>

namespace morvane {

// What work costs in memory, as the kernel counts it for this process.
namespace ProcessMemory {

// The most that `work` made resident at once, in MiB above what was resident before.
[[nodiscard]] qint64 peakMebibytes(const std::function<void()> &work);

// A sanitizer keeps freed memory, so that sizes say nothing.
[[nodiscard]] bool isInstrumented();

} // namespace ProcessMemory

} // namespace morvane
