#pragma once

#include "utils/text/UserPresentableError.h"

namespace morvane {

// Why the screen's text could not be read.
class ScreenGlanceError final : public UserPresentableError {
public:
    enum class Case { permissionNeeded, needsRelaunch, captureFailed, noTextFound, hiddenByFullScreen };

    ScreenGlanceError(Case reason)
        : m_case(reason)
    {}

    [[nodiscard]] Case reason() const { return m_case; }

    [[nodiscard]] QString userMessage() const override;
    [[nodiscard]] std::optional<QString> recoverySuggestion() const override;
    [[nodiscard]] bool isRetryable() const override;

private:
    Case m_case;
};

} // namespace morvane
