#include "view_models/ChatFixture.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class DraftTest : public ChatFixture {
protected:
    [[nodiscard]] QString stored() { return chat.conversation()->draft(); }
};

TEST_F(DraftTest, IsWrittenSomeTimeAfterAKeyAndWhenItsChatIsLeftAndComesBackWithIt)
{
    deliver(u"q"_s, u"a"_s);
    const QString first = chat.conversationId();
    const auto before = chat.conversation()->revision();
    for (const QChar key : u"Dear"_s) {
        chat.setDraft(chat.draft() + key);
        clock.advance(400ms);
    }
    EXPECT_EQ(chat.conversation()->revision(), before) << "not with each key";
    clock.advance(400ms);
    EXPECT_EQ(stored(), u"Dear"_s);
    EXPECT_TRUE(FakeFieldSealing::isSealed(*chat.conversation()->columns().sealedDraft));
    EXPECT_FALSE(repository.context().hasChanges());

    chat.setDraft(u"Dear all"_s);
    chat.newConversation();
    EXPECT_EQ(chat.draft(), QString());
    chat.setDraft(u"elsewhere"_s);
    chat.open(first);
    EXPECT_EQ(chat.draft(), u"Dear all"_s);
    chat.setDraft(u"Dear all,"_s);
    chat.endTurns();
    EXPECT_FALSE(repository.context().hasChanges());

    ChatViewModel next(services); // as the program finds them at its next start
    next.openAtStart();
    EXPECT_EQ(next.draft(), u"elsewhere"_s);
    next.open(first);
    EXPECT_EQ(next.draft(), u"Dear all,"_s);
    next.setDraft(QString());
    next.endTurns();
    EXPECT_FALSE(chat.conversation()->columns().sealedDraft) << "an empty one leaves nothing";
}

TEST_F(DraftTest, IsGoneOnceItIsSentAndWithItsChat)
{
    chat.setDraft(u"half a question"_s);
    clock.advance(2s);
    send(u"half a question?"_s);
    EXPECT_FALSE(chat.conversation()->columns().sealedDraft);
    clock.advance(2s);
    EXPECT_EQ(stored(), QString());
    chat.setDraft(u"next"_s);
    chat.remove(chat.conversationId());
    EXPECT_EQ(chat.draft(), QString());
    clock.advance(2s);
    EXPECT_EQ(repository.count(), 1);
    EXPECT_EQ(stored(), QString());
}

} // namespace

} // namespace morvane
