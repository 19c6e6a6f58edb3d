#pragma once

#include "services/ScreenPicture.h"

#include <QCoroTask>

#include <memory>
#include <stdexcept>
#include <stop_token>

namespace morvane {

// Why there is no picture. The words are for the log and hold nothing of the screen.
class ScreenCaptureFailure : public std::runtime_error {
public:
    enum class Reason {
        failed,
        refused, // by the person, who may choose otherwise the next time
        absent,  // nobody on this desktop takes one
        blind,   // this run isn't let see the screen, whatever is chosen now
    };

    ScreenCaptureFailure(Reason why, const std::string &words)
        : runtime_error(words)
        , reason(why)
    {}

    Reason reason;
};

// Takes a picture of the main display, without this program's own windows. GUI thread.
class ScreenCapturing {
public:
    virtual ~ScreenCapturing() = default;

    // Whether a picture may be asked for; answers at once and asks nobody. Where the desktop asks the person
    // with each picture this is true.
    [[nodiscard]] virtual bool hasAccess() const = 0;
    // Has the desktop ask the person, where it does so ahead of the first picture.
    virtual void requestAccess() = 0;

    // A full-screen window of this program is all that the main display shows.
    [[nodiscard]] virtual bool isHiddenByFullScreen() const = 0;

    // Throws ScreenCaptureFailure.
    [[nodiscard]] virtual QCoro::Task<std::shared_ptr<const ScreenPicture>> capture(std::stop_token stop) = 0;
};

} // namespace morvane
