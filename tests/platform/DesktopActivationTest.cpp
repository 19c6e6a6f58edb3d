#include "platform/linux/DesktopActivation.h"

#include "support/PrivateBus.h"

#include <QDBusPendingCallWatcher>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Chat = AppRequest::Chat;

TEST(DesktopActivationTest, CallsOfTheDesktopBecomeRequestsThatSendNothing)
{
    PrivateBus bus;
    const DesktopActivation activation(bus.connection());
    std::vector<AppRequest> asked;
    QObject::connect(&activation, &DesktopActivation::asked,
                     [&](const AppRequest &each) { asked.push_back(each); });
    auto theirs = bus.connection();
    QString tokenName = u"activation-token"_s;
    const auto call = [&](const QString &method, const QVariantList &arguments) {
        auto message = QDBusMessage::createMethodCall(u"ai.morvane.MorvaneGPT"_s, u"/ai/morvane/MorvaneGPT"_s,
                                                      u"org.freedesktop.Application"_s, method);
        message.setArguments(arguments + QVariantList{QVariantMap{{tokenName, u"t1"_s}}});
        const QDBusPendingCallWatcher reply(theirs.asyncCall(message)); // which wakes the event loop
        TestWait::until([&] { return reply.isFinished(); });
        EXPECT_FALSE(reply.isError()) << reply.error().message().toStdString();
    };
    const auto action = [&](const QString &name, const QVariantList &parameter = {}) {
        call(u"ActivateAction"_s, {name, parameter});
    };
    const QString many(DesktopActivation::mostCharacters + 1, u'x');
    call(u"Activate"_s, {});
    call(u"Open"_s, {QStringList{u"file:///a%20b"_s, u"https://example.org"_s, u"/c"_s}});
    call(u"Open"_s, {QStringList(DesktopActivation::mostFiles + 1, u"file:///a"_s)});
    action(u"new-chat"_s);
    action(u"new-ghost-chat"_s);
    action(u"open-chat"_s, {u"0f0e0d0c-0000-4000-8000-000000000001"_s});
    action(u"open-chat"_s, {u"../x"_s});
    action(u"open-chat"_s);
    action(u"ask"_s, {many});
    action(u"ask"_s, {7});
    action(u"delete-everything"_s);
    tokenName = u"desktop-startup-id"_s;
    call(u"Activate"_s, {});
    std::vector<AppRequest> expected{
        {},
        {.files = {u"/a b"_s}},
        {.files = QStringList(DesktopActivation::mostFiles, u"/a"_s)},
        {.chat = Chat::fresh},
        {.chat = Chat::ghost},
        {.chatID = u"0F0E0D0C-0000-4000-8000-000000000001"_s},
        {.chat = Chat::fresh, .words = many.chopped(1)},
        {.chat = Chat::fresh, .words = u"7"_s},
        {},
    };
    for (AppRequest &each : expected)
        each.activationToken = u"t1"_s;
    EXPECT_EQ(asked, expected);
}

} // namespace

} // namespace morvane
