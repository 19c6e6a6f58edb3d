// What the desktop is told to show, over a real bus: by a server that a test plays, and by a real one.

#include "platform/linux/DesktopNotifications.h"
#include "platform/linux/LoginSession.h"
#include "platform/linux/PortalNotifications.h"
#include "platform/linux/ScreenLock.h"
#include "support/PrivateBus.h"
#include "support/TestScreen.h"
#include "utils/files/PrivateFile.h"
#include "view_models/chat/NotificationService.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString name = u"org.freedesktop.Notifications"_s;
const QString path = u"/org/freedesktop/Notifications"_s;
const QUuid chat = QUuid::createUuid();
const QUuid otherChat = QUuid::createUuid();

// A server of notifications, which notes what it is told.
class Server : public PlayedService {
public:
    explicit Server(const QDBusConnection &bus,
                    QStringList capabilities = {u"body"_s, u"body-markup"_s, u"actions"_s})
        : PlayedService(
              bus, name,
              [this](const QDBusMessage &call, const QDBusConnection &from) { return take(call, from); })
        , m_capabilities(std::move(capabilities))
    {}

    void tellId(const QString &signal, uint id, const QVariant &value)
    {
        tell(path, name, signal, {id, value});
    }
    [[nodiscard]] QString shown() const
    {
        QStringList texts = m_shown.values();
        texts.sort();
        return texts.join(u", "_s);
    }

    uint last = 0; // the number of the newest

private:
    bool take(const QDBusMessage &call, const QDBusConnection &from)
    {
        const QVariantList given = call.arguments();
        if (call.member() == "GetCapabilities"_L1) {
            from.send(call.createReply(m_capabilities));
        } else if (call.member() == "CloseNotification"_L1) {
            m_shown.remove(given.at(0).toUInt());
            from.send(call.createReply());
            tellId(u"NotificationClosed"_s, given.at(0).toUInt(), 3U);
        } else if (call.member() == "Notify"_L1) {
            EXPECT_EQ(call.signature(), u"susssasa{sv}i"_s) << "as the desktops' servers want it";
            const uint id = given.at(1).toUInt() != 0 ? given.at(1).toUInt() : ++last;
            m_shown[id] = textOf(given);
            from.send(call.createReply(id));
        }
        return true;
    }

    [[nodiscard]] QString textOf(const QVariantList &given) const
    {
        const auto hints = qdbus_cast<QVariantMap>(given.at(6));
        QString body = given.at(4).toString();
        if (m_capabilities.contains(u"body-markup"_s))
            body.replace(u"&lt;"_s, u"<"_s).replace(u"&gt;"_s, u">"_s).replace(u"&amp;"_s, u"&"_s);
        return (hints.contains(u"transient"_s) ? u"passing "_s : QString()) +
               (hints.value(u"urgency"_s).toUInt() == 2 ? u"urgent "_s : QString()) + given.at(3).toString() +
               u'|' + body + (given.at(5).toStringList().isEmpty() ? u" unclickable"_s : QString());
    }

    const QStringList m_capabilities;
    QMap<uint, QString> m_shown;
};

class NotificationsTest : public testing::Test {
protected:
    void SetUp() override
    {
        QObject::connect(&m_service, &NotificationService::chosen, &m_service,
                         [this](const QUuid &conversation) { m_chosen += conversation; });
    }
    // Until the server shows this, and has said so.
    static void await(const Server &server, const QString &shown)
    {
        TestWait::until([&] { return server.shown() == shown; });
        TestWait::settle();
    }

    PrivateBus m_bus;
    QDBusConnection m_ours = m_bus.connection();
    DesktopNotifications m_desktop{m_ours};
    NotificationService m_service{m_desktop};
    QList<QUuid> m_chosen;
};

TEST_F(NotificationsTest, EachChatHasOneWhichIsReplacedAndWithdrawn)
{
    Server server(m_bus.connection());
    m_service.replyReady(chat, u"<b>Ferns</b>"_s);
    m_service.replyReady(otherChat, u"Moss"_s);
    m_service.ghostReplyReady();
    m_service.approvalWaits(u"Open this link"_s);
    await(server, u"Reply ready|<b>Ferns</b>, Reply ready|Moss, passing Reply ready|, "
                  u"urgent MorvaneGPT waits for your answer|Open this link"_s);
    m_service.replyFailed(chat, u"Too slow"_s, u"Try again."_s);
    m_service.replyReady(chat, u"Ferns"_s); // before the server has answered
    m_service.replyReady(chat, u"Ferns, again"_s);
    m_service.withdrawChat(otherChat);
    m_service.ghostReplyFailed(u"Too slow"_s, u"Wait"_s);
    m_service.withdrawGhostReplies();
    m_service.approvalWaits(u"Read your screen"_s);
    await(server, u"Reply ready|Ferns, again, urgent MorvaneGPT waits for your answer|Read your screen"_s);
    EXPECT_EQ(server.last, 4U) << "each took its former one's place";
    m_service.withdrawApproval();
    m_service.withdrawAll();
    m_service.replyReady(chat, u"Ferns"_s);
    m_service.withdrawChat(chat);
    m_service.replyReady(chat, u"Ferns & moss"_s);
    await(server, u"Reply ready|Ferns & moss"_s);
}

TEST_F(NotificationsTest, AClickOpensTheChatAndNobodyElseCanClick)
{
    Server server(m_bus.connection());
    QDBusConnection stranger = m_bus.connection();
    m_service.replyReady(chat, u"Ferns"_s);
    await(server, u"Reply ready|Ferns"_s);
    auto aimed = QDBusMessage::createTargetedSignal(m_ours.baseService(), path, name, u"ActionInvoked"_s);
    auto forged = QDBusMessage::createSignal(path, name, u"ActionInvoked"_s);
    auto closing = QDBusMessage::createSignal(path, name, u"NotificationClosed"_s);
    closing.setArguments({1U, 2U});
    for (auto *click : {&forged, &aimed})
        click->setArguments({1U, u"default"_s});
    for (const auto &signal : {forged, aimed, closing})
        stranger.send(signal);
    // A call of the stranger that is answered has gone the same way, behind them.
    stranger.call(QDBusMessage::createMethodCall(name, path, name, u"GetCapabilities"_s),
                  QDBus::BlockWithGui);
    TestWait::settle();
    EXPECT_EQ(m_chosen.count(), 0);
    server.tellId(u"ActionInvoked"_s, 77, u"default"_s); // another program's
    server.tellId(u"ActionInvoked"_s, 1, u"default"_s);
    TestWait::until([&] { return !m_chosen.isEmpty(); });
    EXPECT_EQ(m_chosen.front(), chat);
    server.tellId(u"NotificationClosed"_s, 1, 2U);
    server.tellId(u"ActionInvoked"_s, 1, u"default"_s);
    m_service.replyReady(otherChat, u"Moss"_s);
    await(server, u"Reply ready|Ferns, Reply ready|Moss"_s);
    EXPECT_EQ(m_chosen.count(), 1) << "it was closed";
}

TEST_F(NotificationsTest, AServerIsToldOnlyWhatItCanShowAndAnotherOneIsAskedAnew)
{
    {
        Server plain(m_bus.connection(), {});
        m_service.replyReady(chat, u"<Ferns>"_s);
        await(plain, u"Reply ready: <Ferns>| unclickable"_s);
    }
    Server next(m_bus.connection(), {u"body"_s, u"actions"_s});
    m_service.replyReady(otherChat, u"<Moss>"_s);
    await(next, u"Reply ready: <Moss>| unclickable"_s); // as the former one could
    TestWait::until([&] {
        m_service.replyReady(otherChat, u"<Moss> again"_s);
        return next.shown() == "Reply ready|<Moss> again"_L1;
    });
}

TEST_F(NotificationsTest, NothingStandsOnALockedScreenAndItComesWhenThatOpens)
{
    Server server(m_bus.connection());
    ScreenLock lock(m_bus.connection(), std::nullopt);
    QObject::connect(&lock, &ScreenLock::changed, &m_service, &NotificationService::setScreenLocked);
    m_service.replyReady(chat, u"Ferns"_s);
    await(server, u"Reply ready|Ferns"_s);
    server.tell(u"/any"_s, u"org.gnome.ScreenSaver"_s, u"ActiveChanged"_s, {true});
    await(server, {});
    m_service.replyReady(otherChat, u"Moss"_s);
    m_service.ghostReplyReady();
    m_service.withdrawGhostReplies();
    TestWait::settle();
    EXPECT_EQ(server.last, 1U);
    server.tell(u"/any"_s, u"org.gnome.ScreenSaver"_s, u"ActiveChanged"_s, {false});
    TestWait::until([&] { return server.last == 3; });
    EXPECT_EQ(server.shown().count(u"Reply ready"_s), 2);
}

TEST_F(NotificationsTest, WhatAKilledRunLeftTheNextOneTakesBack)
{
    const QTemporaryDir folder;
    const QString numbers = folder.filePath(u"run/numbers"_s);
    Server server(m_bus.connection());
    m_service.replyReady(otherChat, u"Moss"_s);
    DesktopNotifications killed(m_bus.connection(), numbers);
    for (const auto *key : {"a", "b"})
        killed.post({.key = QString::fromLatin1(key), .title = u"Reply ready"_s});
    await(server, u"Reply ready|, Reply ready|, Reply ready|Moss"_s);
    killed.withdraw(u"a"_s);
    TestWait::until([&] { return PrivateFile::read(numbers, 99)->count('\n') == 1; });
    const DesktopNotifications next(m_bus.connection(), numbers);
    await(server, u"Reply ready|Moss"_s);
    EXPECT_FALSE(QFile::exists(numbers));
    PrivateFile::write(numbers, ":1.0 \n- 1\n" + QByteArray(1 << 17, 'x'));
    const DesktopNotifications third(m_bus.connection(), numbers);
    EXPECT_EQ(server.shown(), u"Reply ready|Moss"_s);
}

TEST_F(NotificationsTest, ASandboxedProgramsLeadToItsChatByTheApplicationsOwnInterface)
{
    QStringList told;
    const PlayedService portal(
        m_bus.connection(), u"org.freedesktop.portal.Desktop"_s,
        [&](const QDBusMessage &call, const QDBusConnection &from) {
            told += call.member() + u' ' + call.arguments().at(0).toString();
            if (call.arguments().size() > 1) {
                const auto notice = qdbus_cast<QVariantMap>(call.arguments().at(1));
                told.last() += u' ' + notice.value(u"title"_s).toString() + u'|' +
                               notice.value(u"body"_s).toString() + u' ' +
                               notice.value(u"default-action"_s).toString();
                const auto target = notice.value(u"default-action-target"_s);
                EXPECT_TRUE(target.toString().isEmpty() || QUuid::fromString(target.toString()) == chat)
                    << target.typeName();
            }
            from.send(call.createReply());
            return true;
        });
    PortalNotifications desktop(m_ours);
    NotificationService service(desktop);
    service.replyReady(chat, u"<Ferns>"_s);
    service.ghostReplyReady();
    service.withdrawChat(chat);
    service.withdrawChat(chat); // also one of an earlier run
    TestWait::until([&] { return told.size() == 4; });
    const QString key = u"chat-"_s + chat.toString(QUuid::WithoutBraces).toUpper();
    EXPECT_EQ(
        told.join(u", "_s),
        u"AddNotification %1 Reply ready|<Ferns> app.open-chat, "
        u"AddNotification ghost Reply ready| , RemoveNotification %1, RemoveNotification %1"_s.arg(key));
}

// A server that people use.
TEST_F(NotificationsTest, ARealServerShowsReplacesAndLeadsBack)
{
    if (QStandardPaths::findExecutable(u"dunst"_s).isEmpty())
        GTEST_SKIP() << "dunst isn't installed";
    TestScreen screen;
    QProcess dunst;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"DISPLAY"_s, screen.display());
    environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, QString::fromUtf8(m_bus.address()));
    dunst.setProcessEnvironment(environment);
    QTimer tick; // nothing tells of what another program does
    tick.start(10);
    dunst.start(u"dunst"_s, QStringList());
    QDBusConnection bus = m_bus.connection();
    TestWait::until([&] {
        return bus.interface()->isServiceRegistered(name).value() || dunst.state() == QProcess::NotRunning;
    });
    const auto ask = [&](const QString &interface, const QString &method, const QVariantList &given) {
        auto call = QDBusMessage::createMethodCall(name, path, interface, method);
        call.setArguments(given);
        return bus.call(call, QDBus::BlockWithGui);
    };
    const auto displayed = [&] {
        const auto reply = ask(u"org.freedesktop.DBus.Properties"_s, u"Get"_s,
                               {u"org.dunstproject.cmd0"_s, u"displayedLength"_s});
        return reply.arguments().value(0).value<QDBusVariant>().variant().toUInt();
    };
    m_service.replyReady(chat, u"Ferns"_s);
    TestWait::until([&] { return displayed() == 1; });
    m_service.replyReady(chat, u"Ferns, again"_s);
    m_service.replyReady(otherChat, u"Moss"_s);
    TestWait::until([&] { return displayed() == 2; });
    m_service.withdrawChat(otherChat);
    TestWait::until([&] { return displayed() == 1; });
    ask(u"org.dunstproject.cmd0"_s, u"NotificationAction"_s, {0U});
    TestWait::until([&] { return !m_chosen.isEmpty(); });
    EXPECT_EQ(m_chosen.front(), chat);
    dunst.kill();
    dunst.waitForFinished();
}

} // namespace

} // namespace morvane
