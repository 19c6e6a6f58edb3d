#include "platform/linux/PolkitPresence.h"

#include "support/PrivateBus.h"

#include <QDBusArgument>

#include <gtest/gtest.h>

#include <future>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Answer = UserPresenceConfirming::Answer;

// As polkit says it.
QVariant judged(bool isAuthorized, bool isChallenge, const QMap<QString, QString> &details = {})
{
    QDBusArgument argument;
    argument.beginStructure();
    argument << isAuthorized << isChallenge << details;
    argument.endStructure();
    return QVariant::fromValue(argument);
}

class PolkitPresenceTest : public testing::Test {
protected:
    PolkitPresenceTest()
    {
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", bus.address());
        qputenv("XDG_SESSION_ID", "7");
    }
    ~PolkitPresenceTest() override
    {
        qunsetenv("DBUS_SYSTEM_BUS_ADDRESS");
        qunsetenv("XDG_SESSION_ID");
    }

    bool hear(const QDBusMessage &call, const QDBusConnection &on)
    {
        const auto failed = [&](const QString &words) {
            return on.send(call.createErrorReply(u"org.freedesktop.PolicyKit1.Error.Failed"_s, words));
        };
        heard += call.member();
        if (call.member() == u"RegisterAuthenticationAgent"_s && !agentRefusal.isEmpty())
            return failed(agentRefusal);
        if (call.member() != u"CheckAuthorization"_s)
            return on.send(call.createReply());
        asked += call.arguments().at(1).toString() + u' ' + call.arguments().at(3).toString();
        if (hangs) {
            call.setDelayedReply(true);
            return true;
        }
        return knowsAction ? on.send(call.createReply(judgement)) : failed(u"Action is not registered"_s);
    }

    template <typename T>
    T beside(std::function<T()> question)
    {
        auto answer = std::async(std::launch::async, std::move(question));
        TestWait::until([&] { // events arrive from other programs alone
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
            QMetaObject::invokeMethod(
                qApp, [] {}, Qt::QueuedConnection);
            return answer.wait_for(0ms) == std::future_status::ready;
        });
        return answer.get();
    }
    Answer confirm(std::chrono::milliseconds patience = 20s, std::stop_token stop = {})
    {
        return beside<Answer>([=] { return PolkitPresence(patience).confirm(u"unlock MorvaneGPT"_s, stop); });
    }
    bool canConfirm()
    {
        return beside<bool>([] { return PolkitPresence().canConfirm(); });
    }

    PrivateBus bus;
    QVariant judgement = judged(false, true);
    QString agentRefusal = u"An authentication agent already exists for the given subject"_s;
    bool knowsAction = true;
    bool hangs = false;
    QStringList heard;
    QStringList asked;
    std::optional<PlayedService> polkit{std::in_place, bus.connection(), u"org.freedesktop.PolicyKit1"_s,
                                        [this](const auto &call, const auto &on) { return hear(call, on); }};
};

TEST_F(PolkitPresenceTest, TellsTheAnswersApart)
{
    const std::pair<QVariant, Answer> table[]{
        {judged(true, false), Answer::Confirmed},
        {judged(false, false), Answer::Refused},
        {judged(false, false, {{u"polkit.dismissed"_s, u"true"_s}}), Answer::Dismissed},
        {judged(false, true), Answer::Unavailable}, // nobody was there to ask
    };
    for (const auto &[said, expected] : table) {
        judgement = said;
        EXPECT_EQ(confirm(), expected);
    }
    EXPECT_EQ(asked.first(), u"ai.morvane.MorvaneGPT.unlock 1"_s);
}

TEST_F(PolkitPresenceTest, AsksNobodyToLearnWhetherItCould)
{
    EXPECT_TRUE(canConfirm());
    EXPECT_EQ(asked, QStringList(u"ai.morvane.MorvaneGPT.unlock 0"_s));
    agentRefusal = u"Cannot determine session the caller is in"_s;
    EXPECT_FALSE(canConfirm());
    agentRefusal.clear();
    EXPECT_FALSE(canConfirm()) << "nobody had a right to be asked first";
    EXPECT_EQ(heard.last(), u"UnregisterAuthenticationAgent"_s);
    judgement = judged(false, false);
    EXPECT_FALSE(canConfirm()) << "the machine's rules refuse it to everybody";
    knowsAction = false;
    EXPECT_FALSE(canConfirm()) << "not installed";
    EXPECT_EQ(confirm(), Answer::Unavailable);
}

TEST_F(PolkitPresenceTest, APolkitThatHangsOrIsGoneHoldsNothingUp)
{
    hangs = true;
    EXPECT_EQ(confirm(50ms), Answer::Unavailable);
    TestWait::until([this] { return heard.last() == u"CancelCheckAuthorization"_s; });
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(confirm(20s, stop.get_token()), Answer::Dismissed);
    polkit.reset();
    EXPECT_EQ(confirm(), Answer::Unavailable);
    EXPECT_FALSE(canConfirm());
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere/at/all");
    EXPECT_EQ(confirm(), Answer::Unavailable);
    EXPECT_FALSE(canConfirm());
}

} // namespace

} // namespace morvane
