#include "platform/linux/DesktopNotifications.h"

#include "support/Await.h"

#include <QProcess>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The desktop's side: keeps what it is told, in order.
class FakeDesktop : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    QStringList told;

public Q_SLOTS:
    uint Notify(QString, uint, QString, QString summary, QString body, QStringList, QVariantMap hints, int)
    {
        told.append((hints.contains(u"transient"_s) ? u"passing "_s : QString()) + summary + u'|' + body);
        return static_cast<uint>(told.size());
    }
    void CloseNotification(uint id) { told.append(u"close %1"_s.arg(id)); }

Q_SIGNALS:
    void ActionInvoked(uint id, QString action);
};

TEST(DesktopNotificationsTest, AreShownClickedAndTakenBack)
{
    QProcess daemon;
    daemon.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
    TestWait::until([&] { return daemon.canReadLine() || daemon.state() == QProcess::NotRunning; });
    const QString address = QString::fromUtf8(daemon.readLine()).trimmed();
    auto theirs = QDBusConnection::connectToBus(address, u"theirs"_s);
    FakeDesktop desktop;
    theirs.registerObject(u"/org/freedesktop/Notifications"_s, &desktop, QDBusConnection::ExportAllContents);
    ASSERT_TRUE(theirs.registerService(u"org.freedesktop.Notifications"_s));

    DesktopNotifications notifications(QDBusConnection::connectToBus(address, u"ours"_s));
    QSignalSpy chosen(&notifications, &DesktopNotifications::chosen);
    const QUuid chat = QUuid::createUuid();
    notifications.replyReady(chat, u"<b>Ferns</b>"_s);
    notifications.approvalWaits(u"Open this link"_s);
    notifications.approvalWaits(u"Read your screen"_s); // before the desktop has numbered the first
    TestWait::until([&] { return desktop.told.size() == 4; });
    Q_EMIT desktop.ActionInvoked(77, u"default"_s); // another program's
    Q_EMIT desktop.ActionInvoked(1, u"default"_s);
    TestWait::until([&] { return !chosen.isEmpty(); });
    EXPECT_EQ(chosen.front().front().toUuid(), chat);
    notifications.withdrawApproval();
    TestWait::until([&] { return desktop.told.size() == 5; });
    notifications.ghostReplyReady();
    TestWait::until([&] { return desktop.told.size() == 6; });
    TestWait::settle(); // the number has come back
    notifications.ghostReplyFailed(u"Too slow"_s, u"Wait"_s);
    notifications.withdrawGhostReplies(); // before the desktop has numbered the second
    TestWait::until([&] { return desktop.told.size() == 9; });
    EXPECT_EQ(desktop.told.join(u'\n').toStdString(),
              "Reply ready|&lt;b&gt;Ferns&lt;/b&gt;\n"
              "MorvaneGPT waits for your answer|Open this link\n"
              "MorvaneGPT waits for your answer|Read your screen\n"
              "close 2\nclose 3\npassing Reply ready|\npassing Too slow|Wait\n"
              "close 6\nclose 7");
    QDBusConnection::disconnectFromBus(u"ours"_s);
    QDBusConnection::disconnectFromBus(u"theirs"_s);
    daemon.kill();
    daemon.waitForFinished();
}

} // namespace

} // namespace morvane

#include "DesktopNotificationsTest.moc"
