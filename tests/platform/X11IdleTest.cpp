// The idle time and the blanking of a real X server. Xvfb has no DPMS, so that displays that sleep aren't
// seen here.

#include "platform/linux/IdleInput.h"

#include "support/Await.h"
#include "support/TestScreen.h"

#include <QProcess>

#include <gtest/gtest.h>

#include <xcb/xcb.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(X11IdleTest, HearsWhatTheXServerCountsAndThatItBlanks)
{
    const TestScreen screen(u"320x200"_s);
    ASSERT_FALSE(screen.display().isEmpty());
    qunsetenv("WAYLAND_DISPLAY");
    qunsetenv("XDG_SESSION_TYPE");
    qputenv("DISPLAY", screen.display().toLatin1());
    IdleInput input({});
    EXPECT_TRUE(input.isServed());
    const auto asked = [&input] {
        input.ask();
        return input.seconds();
    };
    QTimer ticks;
    ticks.start(10);
    TestWait::until([&] { return asked() > 0.5; });
    EXPECT_FALSE(input.isBlanked() || input.areDisplaysOff());
    const auto blank = [](xcb_screen_saver_t mode) {
        xcb_connection_t *const other = xcb_connect(nullptr, nullptr);
        free(xcb_request_check(other, xcb_force_screen_saver_checked(other, mode)));
        xcb_disconnect(other);
    };
    blank(XCB_SCREEN_SAVER_ACTIVE);
    TestWait::until([&] { return input.isBlanked(); }); // told, not asked for
    blank(XCB_SCREEN_SAVER_RESET);
    TestWait::until([&] { return !input.isBlanked(); });

    TestWait::until([&] { return asked() > 0.5; });
    const double before = asked();
    ASSERT_EQ(QProcess::execute(u"xdotool"_s, {u"mousemove"_s, u"20"_s, u"20"_s}), 0);
    EXPECT_LT(asked(), before) << "somebody is here";
}

} // namespace

} // namespace morvane
