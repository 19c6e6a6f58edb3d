#include "end_to_end/AppFixture.h"

#include "app/PracticeTour.h"
#include "persistence/ConversationRepository.h"
#include "persistence/SettingsStore.h"
#include "view_models/chat/ReceiptsModel.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Whole runs of the agent loop through the real window: the model and the search are played by the practice
// server, the approvals by keys and clicks.
class AbilitiesInWindowTest : public AppFixture {
protected:
    // Clicks on the card count once it has been in view for a moment, so answers are given as its buttons
    // give them.
    [[nodiscard]] bool approvalComes()
    {
        return WindowDriver::eventually([this] { return chat().hasApproval(); });
    }
    [[nodiscard]] int searches() { return static_cast<int>(server.requestsTo("/v1/search").size()); }
};

TEST_F(AbilitiesInWindowTest, EachSuggestionOfTheDemoLeadsToSomethingAndSaysThatItIsPractice)
{
    for (int start = 0; start < 2; ++start) // the second one adds nothing
        PracticeTour::begin(state->storage(), state->presentation());
    EXPECT_EQ(state->storage().repository->count(), 3) << "two to look at, and the one that is open";
    QStringList replies;
    for (int i = 0; i < 4; ++i) {
        chat().newConversation();
        WindowDriver::settle();
        auto suggestions = WindowDriver::allItems(window());
        suggestions.removeIf([](const QQuickItem *each) { return each->objectName() != u"suggestion"_s; });
        ASSERT_EQ(suggestions.size(), 4);
        WindowDriver::click(suggestions.at(i));
        WindowDriver::press(window(), Qt::Key_Return);
        if (i == 2) {
            ASSERT_TRUE(approvalComes());
            EXPECT_TRUE(chat().approval().detail.contains(u"practice"_s));
            chat().approve();
        }
        ASSERT_TRUE(turnEnds());
        EXPECT_TRUE(lastText().contains(u"**practice**"_s)) << lastText().toStdString();
        EXPECT_EQ(state->presentation().receipts->rowCount() > 0, i == 1) << "a note, with its undo";
        replies += lastText();
    }
    EXPECT_EQ(replies.removeDuplicates(), 0);
    EXPECT_EQ(searches(), 1);
    for (const auto &block : {u"\n|---"_s, u"```chart"_s, u"```python"_s, u"```stat"_s})
        EXPECT_TRUE(replies.first().contains(block));
}

TEST_F(AbilitiesInWindowTest, ASearchAsksFirstAndAYesForTheChatHoldsForItAndForNoOther)
{
    useModel(u"agent-search"_s);
    window()->showMinimized();
    chat().sendMessage(u"Tell me about ferns"_s, std::nullopt);
    ASSERT_TRUE(approvalComes());
    WindowDriver::settle();
    EXPECT_FALSE(window()->windowStates() & Qt::WindowMinimized) << "it comes up for the question";
    EXPECT_EQ(chat().approval().verb, u"Search the web for this"_s);
    EXPECT_TRUE(chat().approval().detail.contains(u"Tell me about ferns"_s));
    EXPECT_NE(item(u"approval"_s), nullptr);
    EXPECT_EQ(searches(), 0) << "nothing leaves before the answer";
    chat().approveForChat();
    ASSERT_TRUE(turnEnds());
    EXPECT_EQ(searches(), 2) << "the page that can't be read is looked up instead";
    EXPECT_TRUE(lastRow(MessageListModel::SourceDomainsRole).toStringList().contains(u"ferns.invalid"_s));
    EXPECT_FALSE(lastText().contains(u"One moment."_s)) << "words ahead of a call are no part of the answer";
    say(u"And about mosses"_s);
    ASSERT_TRUE(approvalComes());
    EXPECT_EQ(chat().approval().verb, u"Read this page from the search results"_s)
        << "the search itself is asked for no more";
    EXPECT_EQ(searches(), 3);
    WindowDriver::press(window(), Qt::Key_Escape);
    ASSERT_TRUE(turnEnds());

    chat().newConversation();
    say(u"Once more"_s);
    EXPECT_TRUE(approvalComes()) << "another chat asks for itself";
    WindowDriver::settle();
    WindowDriver::press(window(), Qt::Key_Escape);
    ASSERT_TRUE(turnEnds());
    EXPECT_EQ(searches(), 3);
    EXPECT_TRUE(lastText().contains(u"Error: The user declined."_s)) << lastText().toStdString();
    EXPECT_FALSE(lastRow(MessageListModel::FailedRole).toBool());
}

} // namespace

} // namespace morvane
