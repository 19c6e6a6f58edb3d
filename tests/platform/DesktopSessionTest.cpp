#include "platform/linux/DesktopSession.h"

#include "support/PrivateBus.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
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
    template <typename Condition>
    void becomes(Condition condition)
    {
        TestWait::until([&] { return condition(session.absence()); });
    }

    PrivateBus bus;
    QVariantMap of{{u"Active"_s, true}};
    QStringList heard;
    int pipe[2] = {-1, -1};
    bool isGiven = false;
    PlayedService logind{bus.connection(), u"org.freedesktop.login1"_s,
                         [this](const auto &call, const auto &on) { return hearLogind(call, on); }};
    PlayedService desktop{bus.connection(), u"org.freedesktop.portal.Desktop"_s,
                          [this](const QDBusMessage &call, const QDBusConnection &on) {
                              heard += call.member();
                              if (call.member() == u"CreateMonitor"_s)
                                  monitor = u"/org/freedesktop/portal/desktop/session/"_s +
                                            call.service().mid(1).replace(u'.', u'_') + u'/' +
                                            qdbus_cast<QVariantMap>(call.arguments().at(1))
                                                .value(u"session_handle_token"_s)
                                                .toString();
                              return on.send(call.createReply());
                          }};
    QString monitor;
    DesktopSession session{DesktopSession::Buses{bus.connection(), bus.connection()}};
};

TEST_F(DesktopSessionTest, HearsLogind)
{
    using Absence = SessionSignaling::Absence;
    logind.tell(sessionPath, u"org.freedesktop.login1.Session"_s, u"Lock"_s);
    becomes([](const Absence &now) { return now.isScreenLocked; });
    logind.tell(sessionPath, u"org.freedesktop.login1.Session"_s, u"Unlock"_s);
    becomes([](const Absence &now) { return !now.isScreenLocked; });
    tellsOf({{u"LockedHint"_s, true}, {u"Active"_s, false}});
    becomes([](const Absence &now) { return now.isScreenLocked && now.isSessionInactive; });
    tellsOf({{u"LockedHint"_s, false},
             {u"Active"_s, true},
             {u"IdleHint"_s, true},
             {u"IdleSinceHintMonotonic"_s, QVariant::fromValue<quint64>(1)}});
    becomes([](const Absence &now) {
        return !now.isScreenLocked && !now.isSessionInactive && now.idleSeconds > 0;
    });
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
    using Absence = SessionSignaling::Absence;
    for (const auto &saver : {u"org.freedesktop.ScreenSaver"_s, u"org.gnome.ScreenSaver"_s}) {
        for (const bool active : {true, false}) {
            desktop.tell(u"/any/path"_s, saver, u"ActiveChanged"_s, {active});
            becomes([active](const Absence &now) { return now.isScreenSaverRunning == active; });
        }
    }
    for (const int mode : {1, 0}) {
        desktop.tell(
            u"/org/gnome/Mutter/DisplayConfig"_s, properties, u"PropertiesChanged"_s,
            {u"org.gnome.Mutter.DisplayConfig"_s, QVariantMap{{u"PowerSaveMode"_s, mode}}, QStringList()});
        becomes([mode](const Absence &now) { return now.areDisplaysAsleep == (mode == 1); });
    }
    const auto state = [this](const QString &session, bool active, uint step) {
        desktop.tell(u"/org/freedesktop/portal/desktop"_s, u"org.freedesktop.portal.Inhibit"_s,
                     u"StateChanged"_s,
                     {QVariant::fromValue(QDBusObjectPath(session)),
                      QVariantMap{{u"screensaver-active"_s, active}, {u"session-state"_s, step}}});
    };
    state(u"/somebody/elses"_s, true, 2);
    state(monitor, true, 2);
    becomes([](const Absence &now) { return now.isScreenSaverRunning; });
    TestWait::until([this] { return heard.last() == u"QueryEndResponse"_s; });
    EXPECT_EQ(heard.count(u"QueryEndResponse"_s), 1);
    session.stopWatching();
    EXPECT_FALSE(session.absence().isScreenSaverRunning);
}

} // namespace

} // namespace morvane
