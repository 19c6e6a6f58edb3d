#include "platform/linux/AvahiServiceBrowsing.h"

#include "ai/nearby/NetworkComputerBrowser.h"
#include "support/ManualClock.h"
#include "support/PrivateBus.h"

#include <QDBusObjectPath>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdio>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QStringList isolation{u"--pdeathsig"_s, u"KILL"_s,   u"unshare"_s,      u"--net"_s,       u"--mount"_s,
                            u"--pid"_s,       u"--fork"_s, u"--kill-child"_s, u"--mount-proc"_s};

class AvahiServiceBrowsingTest : public testing::Test {
protected:
    ~AvahiServiceBrowsingTest() override
    {
        QDBusConnection::disconnectFromBus(u"ours"_s);
        process.kill();
        process.waitForFinished();
    }

    QString lineOf(const QStringList &command)
    {
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(command.first(), command.mid(1));
        return nextLine();
    }
    QString nextLine()
    {
        TestWait::until([&] { return process.canReadLine() || process.state() == QProcess::NotRunning; });
        return QString::fromUtf8(process.readLine()).trimmed();
    }
    void tell(const QByteArray &command)
    {
        process.write(command + '\n');
        ASSERT_EQ(nextLine(), u"done"_s) << command.constData();
    }
    QString shown() const
    {
        QStringList rows;
        for (const auto &computer : browser.computers())
            rows += computer.displayName + u'@' + computer.hostname;
        return rows.join(u", "_s);
    }
    void awaitShown(const QString &computers)
    {
        SCOPED_TRACE(computers.toStdString());
        try {
            TestWait::until([&] { return shown() == computers; });
        } catch (const std::exception &) {
            FAIL() << "shows " << shown().toStdString();
        }
    }
    QString ending() // of a sweep in which nothing can be searched
    {
        TestWait::until([&] { return !browser.isBrowsing(); });
        return browser.localNetworkDenied() ? u"denied"_s
               : browser.isSearchMissing()  ? u"missing"_s
                                            : u"failed"_s;
    }

    QProcess process;
    QString address = u"unix:path=/nowhere"_s;
    ManualClock clock;
    AvahiServiceBrowsing services{clock,
                                  [this] { return QDBusConnection::connectToBus(address, u"ours"_s); }};
    NetworkComputerBrowser browser{services, clock};
};

TEST_F(AvahiServiceBrowsingTest, FollowsTheComputersOfANetworkAndADaemonThatComesAndGoes)
{
    if (QProcess::execute(u"setpriv"_s, isolation + QStringList{u"true"_s}) != 0) {
        std::fputs("\n*** NOT TESTED: Avahi, since no network namespace can be made here (needs root).\n\n",
                   stderr);
        GTEST_SKIP();
    }
    const QTemporaryDir folder(u"/tmp/avahi-XXXXXX"_s); // a socket's path is 107 bytes at most
    address = u"unix:path="_s + folder.filePath(u"near.sock"_s);
    const auto tellWhatTheySaid = qScopeGuard([&] {
        if (HasFailure())
            QProcess::execute(u"sh"_s, {u"-c"_s, u"tail -n 20 \"$1\"/*.log >&2"_s, u"sh"_s, folder.path()});
    });
    ASSERT_EQ(lineOf(QStringList{u"setpriv"_s} + isolation +
                     QStringList{u"sh"_s, QStringLiteral(MORVANE_AVAHI_NETWORK), folder.path()}),
              u"ready"_s);
    browser.start();
    EXPECT_EQ(ending(), u"missing"_s);

    tell("start");
    const QString anna = u"Anna’s Rechner in der Küche@annas-rechner.local"_s;
    const QString desk = u"Desk@desk.local"_s;
    browser.start();
    awaitShown(u"%1, %2, the third@third.local"_s.arg(anna, desk));
    tell("leave third");
    awaitShown(anna + u", "_s + desk);

    const std::size_t alarms = clock.pendingAlarms();
    const auto seesItGone = [&] { return clock.pendingAlarms() == alarms + 4; };
    tell("stop");
    TestWait::until(seesItGone);
    EXPECT_EQ(shown(), anna + u", "_s + desk);
    tell("leave annas-rechner");
    tell("start");
    awaitShown(desk);
    TestWait::until([&] { return clock.pendingAlarms() == alarms; });
    EXPECT_TRUE(browser.isBrowsing());

    tell("stop");
    TestWait::until(seesItGone);
    clock.advance(AvahiServiceBrowsing::patience);
    EXPECT_EQ(ending(), u"missing"_s);
}

TEST_F(AvahiServiceBrowsingTest, SaysWhyNothingCanBeSearchedAndHearsWhatComesEarly)
{
    browser.start();
    EXPECT_EQ(ending(), u"missing"_s);

    PrivateBus bus;
    address = QString::fromUtf8(bus.address());
    QDBusConnection::disconnectFromBus(u"ours"_s);
    browser.start();
    EXPECT_EQ(ending(), u"missing"_s);

    QString refusal;
    int browsers = 0;
    PlayedService daemon(
        bus.connection(), u"org.freedesktop.Avahi"_s,
        [&](const QDBusMessage &call, const QDBusConnection &on) {
            const QString path = u"/browser%1"_s.arg(++browsers);
            const QString type = call.arguments().value(2).toString();
            if (!refusal.isEmpty())
                return on.send(call.createErrorReply(refusal, u"So."_s));
            for (const auto &[name, flags] : {std::pair{u"Other\nbox"_s, 0U}, {u"Ours"_s, 8U}}) {
                if (type == "_ssh._tcp"_L1) // before its path is told
                    daemon.tell(path, u"org.freedesktop.Avahi.ServiceBrowser"_s, u"ItemNew"_s,
                                {2, 0, name, type, u"local"_s, flags});
            }
            return on.send(call.createReply(QVariant::fromValue(QDBusObjectPath(path))));
        });
    for (const auto &[error, end] : {std::pair{u"org.freedesktop.DBus.Error.AccessDenied"_s, u"denied"_s},
                                     {u"org.freedesktop.Avahi.AccessDeniedError"_s, u"denied"_s},
                                     {u"org.freedesktop.Avahi.NotSupportedError"_s, u"failed"_s}}) {
        refusal = error;
        browser.start();
        EXPECT_EQ(ending(), end) << error.toStdString();
    }
    refusal.clear();
    browser.start();
    awaitShown(u"Other box@Other box.local"_s); // it doesn't tell whose service that is
}

} // namespace

} // namespace morvane
