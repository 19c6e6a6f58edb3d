#pragma once

#include "services/ScreenCapturing.h"

#include <QDBusConnection>

#include <chrono>

namespace morvane {

class Clock;
class Work;

// The screen where only the desktop may look at it: under Wayland, and from inside a sandbox. Its portal asks
// the person, once or each time, and hands over a picture of all displays in a file, which is removed once it
// is read. This program's windows are hidden meanwhile, since nobody says where in the picture they would be;
// where the person has yet to allow it, a first picture is asked for in their sight, and removed unread.
class PortalScreenCapture final : public ScreenCapturing {
public:
    static constexpr std::chrono::milliseconds timeToHide{300}; // the desktop may let windows fade
    static constexpr std::chrono::minutes longestQuestion{2};   // for the person to answer
    static constexpr std::chrono::seconds longestRead{10};
    static constexpr qint64 largestFile = 64 << 20; // bytes

    // `clock` and `work` outlive this object, which outlives its calls.
    PortalScreenCapture(QDBusConnection bus, Clock &clock, Work &work);

    // The portal asks with each picture, as it sees fit.
    [[nodiscard]] bool hasAccess() const override { return true; }
    void requestAccess() override {}
    [[nodiscard]] bool isHiddenByFullScreen() const override;
    // `blind` when the session's bus is gone, which a running program can't come back to.
    [[nodiscard]] QCoro::Task<std::shared_ptr<const ScreenPicture>> capture(std::stop_token stop) override;

private:
    QCoro::Task<QString> pictureFile(std::stop_token stop);
    QCoro::Task<QString> askedFor(std::stop_token stop);

    QDBusConnection m_bus;
    Clock &m_clock;
    Work &m_work;
    bool m_hasTheirWord = false; // the portal has asked the person before
};

} // namespace morvane
