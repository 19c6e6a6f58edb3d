#include "platform/linux/DesktopSession.h"

#include "support/PlayedPortal.h"

#include <QDBusUnixFileDescriptor>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString properties = u"org.freedesktop.DBus.Properties"_s;
const QString sessionPath = u"/org/freedesktop/login1/session/_37"_s;

class DesktopSessionTest : public testing::Test {
protected:
    DesktopSessionTest()
    {
        qputenv("XDG_SESSION_ID", "7");
        desktop.own(u"org.gnome.Mutter.DisplayConfig"_s);
        session.startWatching();
        TestWait::until([this] { return heard.contains(u"GetAll"_s + sessionPath) && isHeld(); });
        TestWait::settle();
    }
    ~DesktopSessionTest() override
    {
        session.stopWatching();
        qunsetenv("XDG_SESSION_ID");
        ::close(pipe[0]);
    }

    bool hearLogind(const QDBusMessage &call, const QDBusConnection &on)
    {
        if (call.member() == u"GetSession"_s)
            return on.send(call.createReply(QVariant::fromValue(QDBusObjectPath(sessionPath))));
        if (call.member() == u"Inhibit"_s) {
            ::close(pipe[0]);
            EXPECT_EQ(::pipe2(pipe, O_NONBLOCK | O_CLOEXEC), 0);
            QDBusUnixFileDescriptor hold;
            hold.giveFileDescriptor(pipe[1]);
            isGiven = true;
            return on.send(call.createReply(QVariant::fromValue(hold)));
        }
        heard += call.member() + call.path();
        return on.send(call.createReply(of));
    }
    // Whether sleep is put off: the other end of the pipe is open somewhere.
    [[nodiscard]] bool isHeld() const
    {
        char byte = 0;
        return isGiven && ::read(pipe[0], &byte, 1) < 0;
    }
    void tellsOf(const QVariantMap &values)
    {
        of = values;
        logind.tell(sessionPath, properties, u"PropertiesChanged"_s,
                    {u"org.freedesktop.login1.Session"_s, QVariantMap(), QStringList()});
    }
    using Absence = SessionSignaling::Absence;
    void becomes(bool Absence::*what, bool is = true)
    {
        TestWait::until([&] { return session.absence().*what == is; });
    }

    PrivateBus bus;
    QVariantMap of{{u"Active"_s, true}};
    QStringList heard;
    int pipe[2] = {-1, -1};
    bool isGiven = false;
    PlayedService logind{bus.connection(), u"org.freedesktop.login1"_s,
                         [this](const auto &call, const auto &on) { return hearLogind(call, on); }};
    PlayedPortal desktop{bus.connection(), [this](const QDBusMessage &call, const QDBusConnection &on) {
                             heard += call.member();
                             if (call.member() == u"CreateMonitor"_s)
                                 monitor = PlayedPortal::handleOf(call, u"session"_s);
                             return on.send(call.createReply());
                         }};
    QString monitor;
    DesktopSession session{DesktopSession::Buses{bus.connection(), bus.connection()}};
};

TEST_F(DesktopSessionTest, HearsLogind)
{
    for (const bool locked : {true, false}) {
        logind.tell(sessionPath, u"org.freedesktop.login1.Session"_s, locked ? u"Lock"_s : u"Unlock"_s);
        becomes(&Absence::isScreenLocked, locked);
    }
    tellsOf({{u"LockedHint"_s, true}, {u"Active"_s, false}});
    becomes(&Absence::isScreenLocked);
    becomes(&Absence::isSessionInactive);
    tellsOf({{u"LockedHint"_s, false},
             {u"Active"_s, true},
             {u"IdleHint"_s, true},
             {u"IdleSinceHintMonotonic"_s, QVariant::fromValue<quint64>(1)}});
    becomes(&Absence::isScreenLocked, false);
    becomes(&Absence::isSessionInactive, false);
    TestWait::until([this] { return session.absence().idleSeconds > 0; });
}

TEST_F(DesktopSessionTest, PutsSleepOffUntilEverybodyHasHeard)
{
    bool wasHeld = false;
    QObject::connect(&session, &SessionSignaling::changed, &session, [&] {
        if (session.absence().isSystemAsleep)
            wasHeld = isHeld();
    });
    const auto prepare = [this](bool begins) {
        logind.tell(u"/org/freedesktop/login1"_s, u"org.freedesktop.login1.Manager"_s, u"PrepareForSleep"_s,
                    {begins});
    };
    prepare(true);
    TestWait::until([this] { return session.absence().isSystemAsleep && !isHeld(); });
    EXPECT_TRUE(wasHeld);
    isGiven = false;
    prepare(false);
    TestWait::until([this] { return !session.absence().isSystemAsleep && isHeld(); });
}

TEST_F(DesktopSessionTest, HearsScreenSaversDisplaysAndThePortal)
{
    for (const auto &saver : {u"org.freedesktop.ScreenSaver"_s, u"org.gnome.ScreenSaver"_s}) {
        for (const bool active : {true, false}) {
            desktop.tell(u"/any/path"_s, saver, u"ActiveChanged"_s, {active});
            becomes(&Absence::isScreenSaverRunning, active);
        }
    }
    for (const int mode : {1, 0}) {
        desktop.tell(
            u"/org/gnome/Mutter/DisplayConfig"_s, properties, u"PropertiesChanged"_s,
            {u"org.gnome.Mutter.DisplayConfig"_s, QVariantMap{{u"PowerSaveMode"_s, mode}}, QStringList()});
        becomes(&Absence::areDisplaysAsleep, mode == 1);
    }
    const auto state = [this](const QString &session, bool active, uint step) {
        desktop.tell(u"/org/freedesktop/portal/desktop"_s, u"org.freedesktop.portal.Inhibit"_s,
                     u"StateChanged"_s,
                     {QVariant::fromValue(QDBusObjectPath(session)),
                      QVariantMap{{u"screensaver-active"_s, active}, {u"session-state"_s, step}}});
    };
    state(u"/somebody/elses"_s, true, 2);
    state(monitor, true, 2);
    becomes(&Absence::isScreenSaverRunning);
    TestWait::until([this] { return heard.last() == u"QueryEndResponse"_s; });
    EXPECT_EQ(heard.count(u"QueryEndResponse"_s), 1);
    session.stopWatching();
    EXPECT_FALSE(session.absence().isScreenSaverRunning);
}

} // namespace

} // namespace morvane
