// How long nobody has been here, by a compositor that a test plays and by a real X server. Xvfb has no DPMS,
// so that displays that sleep aren't seen here.

#include "platform/linux/IdleInput.h"
#include "platform/linux/WaylandIdle.h"
#include "support/Await.h"
#include "support/TestScreen.h"

#include <QProcess>
#include <QSocketNotifier>
#include <QTemporaryDir>

#include <ext-idle-notify-v1.h>
#include <gtest/gtest.h>
#include <wayland-server-protocol.h>
#include <xcb/xcb.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// A compositor that has a seat when the test says so, and tells of idleness when the test does.
class PlayedCompositor {
public:
    PlayedCompositor()
        : m_display(wl_display_create())
        , m_events(wl_event_loop_get_fd(wl_display_get_event_loop(m_display)), QSocketNotifier::Read)
    {
        qputenv("XDG_RUNTIME_DIR", m_folder.path().toUtf8());
        qputenv("WAYLAND_DISPLAY", "played");
        EXPECT_EQ(wl_display_add_socket(m_display, "played"), 0);
        wl_global_create(m_display, &ext_idle_notifier_v1_interface, 1, this,
                         &PlayedCompositor::bindNotifier);
        QObject::connect(&m_events, &QSocketNotifier::activated, &m_events, [this] {
            wl_event_loop_dispatch(wl_display_get_event_loop(m_display), 0);
            flush();
        });
    }
    ~PlayedCompositor()
    {
        wl_display_destroy_clients(m_display);
        wl_display_destroy(m_display);
        qunsetenv("WAYLAND_DISPLAY");
    }
    PlayedCompositor(const PlayedCompositor &) = delete;
    PlayedCompositor &operator=(const PlayedCompositor &) = delete;

    void addSeat()
    {
        wl_global_create(m_display, &wl_seat_interface, 1, this,
                         [](wl_client *client, void *, std::uint32_t version, std::uint32_t id) {
                             wl_resource_create(client, &wl_seat_interface, int(version), id);
                         });
        flush();
    }
    enum Event : std::uint32_t { idled, resumed }; // as the protocol numbers them
    void tell(Event event)
    {
        wl_resource_post_event(asker, event);
        flush();
    }

    wl_resource *asker = nullptr;
    std::uint32_t milliseconds = 0;

private:
    struct Requests { // in the protocol's order
        void (*destroy)(wl_client *, wl_resource *);
        void (*getNotification)(wl_client *, wl_resource *, std::uint32_t, std::uint32_t, wl_resource *);
    };

    static void leave(wl_client *, wl_resource *resource) { wl_resource_destroy(resource); }
    static void bindNotifier(wl_client *client, void *self, std::uint32_t version, std::uint32_t id)
    {
        static constexpr Requests requests{
            &leave, [](wl_client *by, wl_resource *notifier, std::uint32_t number, std::uint32_t after,
                       wl_resource *) {
                auto *const played = static_cast<PlayedCompositor *>(wl_resource_get_user_data(notifier));
                played->milliseconds = after;
                played->asker = wl_resource_create(by, &ext_idle_notification_v1_interface, 1, number);
                wl_resource_set_implementation(played->asker, &requests.destroy, played, nullptr);
            }};
        wl_resource_set_implementation(
            wl_resource_create(client, &ext_idle_notifier_v1_interface, int(version), id), &requests, self,
            nullptr);
    }
    void flush() { wl_display_flush_clients(m_display); }

    QTemporaryDir m_folder;
    wl_display *const m_display;
    QSocketNotifier m_events;
};

TEST(WaylandIdleTest, TellsOfHalfAMinuteAndOfWhoComesBackAndAsksNoXServer)
{
    auto compositor = std::make_unique<PlayedCompositor>();
    qputenv("DISPLAY", ":65000"); // where somebody may be away for long
    IdleInput input(std::nullopt);
    int changes = 0;
    QObject::connect(&input, &IdleInput::changed, &input, [&changes] { ++changes; });
    TestWait::settle();
    EXPECT_EQ(compositor->asker, nullptr) << "nobody's idleness can be asked for yet";
    EXPECT_FALSE(input.isServed());
    input.ask();
    EXPECT_EQ(input.seconds(), 0);

    compositor->addSeat();
    TestWait::until([&] { return compositor->asker != nullptr; });
    EXPECT_TRUE(input.isServed());
    EXPECT_EQ(compositor->milliseconds, 30'000U);
    compositor->tell(PlayedCompositor::idled);
    TestWait::until([&] { return changes > 0; });
    EXPECT_GE(input.seconds(), 30);
    EXPECT_LT(input.seconds(), 60);
    compositor->tell(PlayedCompositor::resumed);
    TestWait::until([&] { return input.seconds() == 0; });

    compositor->tell(PlayedCompositor::idled);
    TestWait::until([&] { return input.seconds() >= 30; });
    compositor.reset();
    TestWait::settle();
    input.ask();
    EXPECT_EQ(input.seconds(), 0) << "what it told last isn't true for ever";
    qunsetenv("DISPLAY");
}

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
