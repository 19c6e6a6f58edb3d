// The portal by a mock on a bus of its own, and xdg-open as it is installed, with a browser of the test's.

#include "platform/linux/DesktopLinks.h"

#include "async/CancelledError.h"
#include "platform/linux/PortalCall.h"
#include "support/ManualClock.h"
#include "support/PlayedPortal.h"
#include "utils/files/PrivateFile.h"

#include <QDBusUnixFileDescriptor>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

namespace morvane {

using namespace Qt::StringLiterals;
using Outcome = LinkOpening::Outcome;

namespace {

// Answers with `response`, or not at all.
class Portal : public PlayedPortal {
public:
    explicit Portal(const QDBusConnection &bus)
        : PlayedPortal(bus, [this](const auto &call, const auto &on) { return hear(call, on); })
    {}

    std::optional<uint> response = 0;
    QString error;
    QStringList opened;

private:
    bool hear(const QDBusMessage &call, const QDBusConnection &on)
    {
        if (!call.member().startsWith("Open"_L1))
            return false;
        const QVariant what = call.arguments().at(1);
        const int file = qvariant_cast<QDBusUnixFileDescriptor>(what).fileDescriptor();
        opened += call.member() == "OpenURI"_L1 ? what.toString()
                                                : QFileInfo(u"/proc/self/fd/%1"_s.arg(file)).symLinkTarget();
        if (!error.isEmpty())
            return on.send(call.createErrorReply(error, u"So."_s));
        if (response) // before its path is told
            decide(handleOf(call), on, *response);
        take(call, on);
        return true;
    }
};

class DesktopLinksTest : public testing::Test {
protected:
    static void put(const QString &path, const QByteArray &script)
    {
        PrivateFile::write(path, "#!/bin/sh\n" + script + '\n');
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    Outcome opened(const QUrl &url) { return TestWait::await(links.open(url, {})); }

    PrivateBus bus;
    ManualClock clock;
    DesktopLinks links{bus.connection(), clock};
    const QUrl page{u"https://a.example/ü?q=1"_s};
    const QString shown = u"https://a.example/%C3%BC?q=1"_s;
};

TEST_F(DesktopLinksTest, AskThePortalAndHeedItsAnswer)
{
    Portal portal(bus.connection());
    for (const auto &[response, outcome] :
         {std::pair{0U, Outcome::opened}, {1U, Outcome::dismissed}, {2U, Outcome::failed}}) {
        portal.response = response;
        EXPECT_EQ(opened(page), outcome);
    }
    portal.response = 0;
    EXPECT_EQ(opened(QUrl::fromLocalFile(u"/tmp"_s)), Outcome::opened);
    EXPECT_EQ(opened(QUrl::fromLocalFile(u"/no/such/file"_s)), Outcome::failed);
    portal.error = u"org.freedesktop.portal.Error.NotAllowed"_s;
    portal.response.reset();
    EXPECT_EQ(opened(page), Outcome::failed);
    EXPECT_EQ(portal.opened, QStringList({shown, shown, shown, u"/tmp"_s, shown}));

    // One that takes its time, and one that nobody waits for any more.
    portal.error.clear();
    auto outcome = TestWait::begin(links.open(page, {}));
    TestWait::until([&] { return portal.opened.size() == 6; });
    TestWait::settle();
    EXPECT_FALSE(outcome->done);
    clock.advance(PortalCall::patience);
    EXPECT_EQ(TestWait::result<Outcome>(outcome), Outcome::failed);
    std::stop_source stop;
    outcome = TestWait::begin(links.open(page, stop.get_token()));
    stop.request_stop();
    EXPECT_THROW(TestWait::result<Outcome>(outcome), CancelledError);
    EXPECT_EQ(clock.pendingAlarms(), 0U);
}

TEST_F(DesktopLinksTest, WithoutAPortalTheExitOfXdgOpenTellsTheTruth)
{
    const QTemporaryDir folder;
    const QString browser = folder.filePath(u"browser"_s);
    const QByteArray path = qgetenv("PATH");
    qputenv("BROWSER", QFile::encodeName(browser));
    qputenv("DISPLAY", ":none"); // a browser that draws is asked for only then
    const QString mark = folder.filePath(u"mark"_s);
    put(browser, "printf %s \"$1\" >" + QFile::encodeName(mark));
    EXPECT_EQ(opened(page), Outcome::opened);
    EXPECT_EQ(PrivateFile::read(mark, 999), shown.toUtf8());
    put(browser, "exit 1");
    EXPECT_EQ(opened(page), Outcome::failed);

    // A browser in the foreground is what was wanted.
    put(folder.filePath(u"xdg-open"_s), "echo $$ >" + QFile::encodeName(mark) + "; exec sleep 600");
    qputenv("PATH", QFile::encodeName(folder.path()) + ':' + path);
    QFile::remove(mark);
    const auto outcome = TestWait::begin(links.open(page, {}));
    QTimer looking; // the script can't wake this loop
    looking.start(10);
    TestWait::until([&] { return QFileInfo(mark).size() > 0; });
    clock.advance(DesktopLinks::patience);
    EXPECT_EQ(TestWait::result<Outcome>(outcome), Outcome::opened);
    EXPECT_EQ(::kill(PrivateFile::read(mark, 99)->trimmed().toInt(), SIGKILL), 0) << "it was left alone";

    qputenv("PATH", "/nonexistent");
    EXPECT_EQ(opened(page), Outcome::failed);
    qputenv("PATH", path);
    qunsetenv("BROWSER");
    qunsetenv("DISPLAY");
}

} // namespace

} // namespace morvane
