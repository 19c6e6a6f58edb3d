// A person has their screen looked at in the real window, for a test that watches this process from outside
// and shows the words on the display. It says on its output how far it has come, and goes on with each line
// that it is given.

#include "end_to_end/AppFixture.h"
#include "models/Conversation.h"
#include "network/NetworkLedger.h"
#include "persistence/SettingsStore.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/settings/ScreenTestViewModel.h"

#include <cstdio>
#include <ctime>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The longest that the GUI thread was at work between two looks at its timers, in milliseconds of its own
// processor time: the machine is shared.
class LongestBlock : public QObject {
public:
    LongestBlock() { startTimer(1, Qt::PreciseTimer); }

    [[nodiscard]] double milliseconds() const { return m_longest; }

private:
    void timerEvent(QTimerEvent *) override
    {
        const double since = std::exchange(m_last, now());
        m_longest = std::max(m_longest, m_last - since);
    }
    static double now()
    {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
    }

    double m_last = now();
    double m_longest = 0;
};

class ScreenSession : public AppFixture {
protected:
    [[nodiscard]] AttachmentDesk &desk() const { return *chat().entries()->attachments(); }
    // Until it is there, or a banner says why not.
    void look(bool summarize)
    {
        chat().dismissBanner();
        desk().clear();
        chat().entries()->glanceAtScreen(summarize);
        EXPECT_TRUE(WindowDriver::eventually([this] {
            return desk().state() != AttachmentDesk::State::Empty || chat().hasBanner();
        })) << "no answer";
        WindowDriver::settle();
    }
};

TEST_F(ScreenSession, IsReadShownAskedAboutAndKeptNear)
{
    const QString mark = u"MarigoldHarbour"_s;
    const QString own = u"Thimbleweed"_s; // stands in our own window
    chat().setDraft(own);
    WindowDriver::settle();
    come("begun");
    double block = 0;
    {
        const LongestBlock watch;
        chat().entries()->glanceAtScreen(true);
        EXPECT_TRUE(
            WindowDriver::eventually([this] { return desk().state() != AttachmentDesk::State::Empty; }));
        block = watch.milliseconds();
    }
    std::printf("longest block %.2f\n", block);
    EXPECT_EQ(desk().name(), u"What's on your screen"_s) << chat().banner().message.toStdString();
    EXPECT_TRUE(desk().text().contains(mark)) << "behind our window";
    EXPECT_FALSE(desk().text().contains(own));
    EXPECT_EQ(chat().draft(), own + u" Summarize what's on my screen."_s);
    EXPECT_TRUE(server.chats().empty()) << "nothing goes before the person has seen it";
    WindowDriver::settle();
    WindowDriver::click(item(u"attachmentText"_s));
    EXPECT_TRUE(WindowDriver::eventually([this] {
        const QQuickItem *words = item(u"attachmentWords"_s);
        return words && words->property("text").toString() == desk().text();
    }));
    WindowDriver::press(window(), Qt::Key_Escape);
    come("shown");

    chat().send();
    ASSERT_TRUE(turnEnds());
    EXPECT_TRUE(server.chats().back().body.contains(mark.toUtf8()));
    EXPECT_TRUE(chat().conversation()->carriesScreenText());
    come("sent");

    // The chat stays near for good, its screen text deleted or not.
    const std::size_t asked = server.chats().size();
    state->storage().settings->setBaseURLString(u"https://models.invalid/v1"_s);
    say(u"And now?"_s);
    ASSERT_TRUE(turnEnds());
    EXPECT_TRUE(chat().banner().message.contains(u"private data"_s)) << chat().banner().message.toStdString();
    for (const auto &row : state->assistant().networkLedger->snapshot().entries)
        EXPECT_NE(row.host, u"models.invalid"_s);
    EXPECT_EQ(server.chats().size(), asked);
    state->storage().settings->setBaseURLString(server.baseUrl());

    // The model's own look is asked for first, and marks another chat.
    chat().newConversation();
    state->storage().settings->setScreenAwarenessEnabled(true);
    useModel(u"agent-looks"_s);
    say(u"What do I see?"_s);
    if (WindowDriver::eventually([this] { return chat().hasApproval() || !chat().isResponding(); }) &&
        chat().hasApproval())
        chat().approve();
    ASSERT_TRUE(turnEnds());
    EXPECT_TRUE(lastText().contains(mark)) << lastText().toStdString();
    EXPECT_TRUE(chat().conversation()->carriesScreenText());

    ScreenTestViewModel &test = *state->presentation().screenTest;
    test.test();
    EXPECT_TRUE(WindowDriver::eventually([&test] { return !test.isTesting(); }));
    EXPECT_TRUE(test.worked() && test.message().startsWith(u"It works: "_s)) << test.message().toStdString();

    window()->showFullScreen();
    WindowDriver::settle();
    look(false);
    EXPECT_TRUE(chat().banner().message.startsWith(u"MorvaneGPT is full screen"_s));
    come("over");
}

} // namespace

} // namespace morvane
