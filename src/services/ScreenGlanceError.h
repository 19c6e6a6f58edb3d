#pragma once

#include "utils/text/ErrorFamily.h"

namespace morvane {

// Why the screen's text could not be read.
struct ScreenGlanceErrorCases {
    enum class Case {
        permissionNeeded,
        needsRelaunch,
        captureFailed,
        noTextFound,
        hiddenByFullScreen,
        noneHere
    };
};

class ScreenGlanceError final : public ErrorFamily<ScreenGlanceErrorCases> {
public:
    using ErrorFamily::ErrorFamily;

    [[nodiscard]] QString userMessage() const override;
    [[nodiscard]] std::optional<QString> recoverySuggestion() const override;
    [[nodiscard]] bool isRetryable() const override;
};

} // namespace morvane
