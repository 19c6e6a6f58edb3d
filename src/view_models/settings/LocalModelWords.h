#pragma once

#include "ai/local/LocalModelService.h"

#include <QString>

namespace morvane {

// What the window says of the local model. Pure.
namespace LocalModelWords {

// Decimal units, as disks and lines are sold: "4.7 GB".
[[nodiscard]] QString size(std::uint64_t bytes);

// The state as a title, and what goes with it.
[[nodiscard]] QString title(const LocalModelService &service);
[[nodiscard]] QString explanation(const LocalModelService &service);

// "412 MB of 1.4 GB · 8.2 MB/s · about 2 minutes left", as far as it is known.
[[nodiscard]] QString progress(const TransferFigures &figures);

// "about 3 minutes", "about 2 hours"; never nothing.
[[nodiscard]] QString time(std::chrono::seconds duration);

// What a press would fetch and from where, so that it can be agreed to. Empty when it fetches nothing.
[[nodiscard]] QString question(const SetupPlan &plan, const LocalRuntimeValues &values);

// The image model, as a sentence.
[[nodiscard]] QString vision(const LocalModelService::VisionSidecarState &state);

// Each changed fingerprint, as it was and as it is.
[[nodiscard]] QString fingerprints(const std::vector<ModelDigestPins::Change> &changes);

} // namespace LocalModelWords

} // namespace morvane
