#pragma once

#include <QCoroTask>
#include <QString>

#include <stop_token>

namespace morvane {

// Reads what is visible on the screen, as text, without this program's own windows. GUI thread.
class ScreenGlancing {
public:
    virtual ~ScreenGlancing() = default;

    // Throws ScreenGlanceError.
    [[nodiscard]] virtual QCoro::Task<QString> captureText(std::stop_token stop) = 0;
};

} // namespace morvane
