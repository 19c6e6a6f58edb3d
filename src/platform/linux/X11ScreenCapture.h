#pragma once

#include "services/ScreenCapturing.h"

namespace morvane {

class Work;

// The screen of an X11 session. Every program of the session may look at it there, so nobody is asked but the
// person, by the one who calls this.
class X11ScreenCapture final : public ScreenCapturing {
public:
    // `work` outlives this object.
    explicit X11ScreenCapture(Work &work)
        : m_work(work)
    {}

    [[nodiscard]] bool hasAccess() const override { return true; }
    void requestAccess() override {}
    [[nodiscard]] bool isHiddenByFullScreen() const override;
    [[nodiscard]] QCoro::Task<std::shared_ptr<const ScreenPicture>> capture(std::stop_token stop) override;

private:
    Work &m_work;
};

} // namespace morvane
