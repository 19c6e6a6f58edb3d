#include "WindowFixture.h"

#include "ai/contract/ProviderError.h"
#include "memory/MemoryStore.h"
#include "models/ChatMessage.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "persistence/SettingsStore.h"
#include "security/SealedForm.h"
#include "security/SealingTrouble.h"
#include "view_models/ShellViewModel.h"
#include "view_models/chat/ChatViewModel.h"

#include <set>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class ChatPageTest : public WindowFixture {
protected:
    // The named item of the last row; null when it isn't drawn.
    [[nodiscard]] QQuickItem *lastVisible(const QString &name) const
    {
        QQuickItem *last = nullptr;
        for (QQuickItem *next : allItems()) {
            if (next->objectName() == name && next->isVisible() &&
                (!last || next->mapToScene({}).y() > last->mapToScene({}).y()))
                last = next;
        }
        return last;
    }
    void fail(const ProviderError &error)
    {
        m_app->presentation().chat->showError(std::make_exception_ptr(error));
        settle();
    }
};

TEST_F(ChatPageTest, ABannerOffersRetryOnlyWhenThatHelps)
{
    for (const bool helps : {true, false}) {
        fail(ProviderError(helps ? ProviderError::Plain::networkUnavailable
                                 : ProviderError::Plain::authenticationFailed));
        const ErrorBanner banner = m_app->presentation().chat->banner();
        EXPECT_TRUE(shows(banner.message) && shows(banner.suggestion)) << banner.message.toStdString();
        EXPECT_EQ(item(u"retry"_s)->isVisible(), helps);
        click(item(u"dismissBanner"_s));
        EXPECT_FALSE(shows(banner.message));
    }
}

TEST_F(ChatPageTest, AReplySpentOnThinkingLeadsToTheLimitThatCanBeRaised)
{
    fail(ProviderError(ProviderError::Plain::emptyResponse));
    EXPECT_FALSE(item(u"raiseReplyLimit"_s)->isVisible());
    fail(ProviderError(ProviderError::Plain::limitSpentThinking));
    EXPECT_TRUE(item(u"retry"_s)->isVisible());
    for (const std::int64_t raised : {1280, 1536}) { // the settings window is closed, and then open elsewhere
        click(item(u"raiseReplyLimit"_s));
        QQuickWindow *settings = settingsWindow();
        ASSERT_NE(settings, nullptr);
        ASSERT_TRUE(eventually([&] { return isAt(settings, u"Longest reply in tokens"_s); }));
        WindowDriver::press(settings, Qt::Key_Up);
        EXPECT_EQ(m_app->storage().settings->maxOutputTokens(), raised);
        settings->setProperty("page", u"memory"_s);
    }
}

TEST_F(ChatPageTest, WhileTextsAreKeptReadableThePageSaysWhyUntilTheyAreSealed)
{
    const QString notice = u"New text is being kept unsealed"_s;
    m_keychain.setFailure(
        KeychainError(KeychainError::Operation::Read, KeychainStatus::InteractionNotAllowed));
    const auto chat = m_app->storage().repository->find(QUuid(addChat(u"Title"_s, {u"words"_s})));
    EXPECT_EQ(chat->columns().sealedTitle, u"Title"_s) << "nothing is lost";
    EXPECT_TRUE(eventually([&] { return shows(notice); }));
    EXPECT_TRUE(shows(sentenceFor(SealingTrouble::KeychainLocked)));
    m_clock.advance(std::chrono::seconds(5));
    settle();
    EXPECT_TRUE(shows(notice)) << "it still fails";
    m_keychain.setFailure({});
    m_clock.advance(std::chrono::seconds(10));
    EXPECT_TRUE(eventually([&] { return !shows(notice); }));
    EXPECT_TRUE(SealedForm::isSealedField(chat->columns().sealedTitle)) << "what was left is sealed";
}

TEST_F(ChatPageTest, OnlyARowThatIsRunningShowsTheDots)
{
    const struct {
        MessageStatus status;
        QString words;
    } stored[] = {{MessageStatus::streaming, u"This reply was interrupted."_s},
                  {MessageStatus::cancelled, u"You stopped this reply."_s},
                  {MessageStatus::failed, u"No connection."_s},
                  {MessageStatus::failed, u"This reply was cut short."_s},
                  {MessageStatus::failed, u"No reply came."_s}};
    for (const auto &[status, words] : stored) {
        const bool isCut =
            words.startsWith(u"This reply was cut"_s); // tried again since, so it tells no error
        showReply(isCut ? u"half a"_s : QString(), [&, status = status](ChatMessage &reply) {
            reply.setStatus(status);
            if (words.startsWith(u"No connection"_s))
                reply.setErrorMessage(words);
        });
        EXPECT_EQ(lastVisible(u"retryReply"_s) != nullptr, status != MessageStatus::cancelled);
        EXPECT_TRUE(shows(words)) << words.toStdString();
        EXPECT_EQ(lastVisible(u"replyIndicator"_s), nullptr) << words.toStdString();
    }
    send();
    EXPECT_NE(lastVisible(u"replyIndicator"_s), nullptr);
    stream(u"An answer"_s);
    EXPECT_EQ(lastVisible(u"replyIndicator"_s), nullptr);
    EXPECT_TRUE(shows(u"An answer"_s));
}

TEST_F(ChatPageTest, ThinkingIsFoldedUnlessItIsAllThereIs)
{
    showReply(u"<think>Hm, two.</think>Two."_s);
    QQuickItem *fold = lastVisible(u"thoughtFold"_s);
    ASSERT_NE(fold, nullptr);
    EXPECT_TRUE(shows(u"Two."_s) && !shows(u"Hm, two."_s));
    QQuickItem *copy = lastVisible(u"copyReply"_s);
    click(copy);
    EXPECT_EQ(clipboard(), u"Two."_s);
    EXPECT_EQ(accessibleName(copy), u"Copied"_s);
    EXPECT_EQ(lastVisible(u"continueReply"_s), nullptr) << "it is whole";
    click(fold);
    EXPECT_TRUE(shows(u"Hm, two."_s));
    fold->forceActiveFocus(Qt::TabFocusReason);
    for (const int key : {Qt::Key_Return, Qt::Key_Space}) {
        press(key);
        EXPECT_EQ(shows(u"Hm, two."_s), key == Qt::Key_Space);
    }
    showReply(u"<think>Hm, three."_s);
    EXPECT_TRUE(shows(u"Hm, three."_s) && shows(u"The model thought, but gave no answer."_s));
    EXPECT_EQ(lastVisible(u"copyReply"_s), nullptr);
}

TEST_F(ChatPageTest, AReplyThatStandsStillOffersToStop)
{
    send();
    stream(u"Half"_s);
    m_clock.advance(10s);
    settle();
    EXPECT_EQ(accessibleName(item(u"announcement"_s)), u"Nothing new for 10s"_s);
    QQuickItem *stop = lastVisible(u"stopStalled"_s);
    ASSERT_NE(stop, nullptr);
    click(stop);
    EXPECT_TRUE(isAbandoned());
}

TEST_F(ChatPageTest, WhatLooksLikeMarkupStaysText)
{
    const QString hostile =
        u"<img src=\"http://tracker.example/p.png\"><b>bold</b> ![x](http://a.example/y.png)"_s;
    m_app->presentation().chat->open(addChat(hostile, {hostile, hostile}, [&](ChatMessage &reply) {
        reply.setStatus(MessageStatus::failed);
        reply.setErrorMessage(hostile);
        reply.appendToolLine(hostile);
        reply.setSourceDomains(QStringList(hostile));
    }));
    fail(ProviderError(ProviderError::ModelError{hostile}));
    m_app->assistant().memory->remember(hostile);
    settle();
    int texts = 0;
    for (QQuickItem *child : allItems()) {
        if (!child->property("text").toString().contains(hostile) || child->property("textFormat").isNull())
            continue;
        ++texts;
        EXPECT_EQ(child->property("textFormat").toInt(), Qt::PlainText) << child->metaObject()->className();
    }
    EXPECT_GE(texts, 6);
}

TEST_F(ChatPageTest, AToolLineCarriesATickOnlyForWhatSucceededAndOpens)
{
    showReply(u"Done"_s, [](ChatMessage &reply) {
        reply.appendToolLine(u"Couldn't be better"_s, ToolLineState::finished);
        reply.appendToolLine(u"Used something"_s, ToolLineState::failed);
        reply.appendToolLine(u"Searching the web…"_s); // when the program ended
        reply.appendToolLine(u"Didn't open the link"_s, ToolLineState::declined);
        reply.appendToolLine(u"Reading a.example…"_s, ToolLineState::stopped,
                             {u"https://a.example/"_s, u"<b>Page</b>"_s, true});
    });
    QStringList marks;
    for (QQuickItem *child : allItems()) {
        if (child->objectName() == u"toolMark"_s)
            marks += child->property("name").toString();
    }
    EXPECT_EQ(marks, (QStringList{u"check"_s, u"warning"_s, u"more"_s, u"close"_s, u"stop"_s}));
    for (const auto &said : {u"Interrupted"_s, u"Not allowed"_s, u"Stopped"_s})
        EXPECT_TRUE(shows(said)) << said.toStdString();

    QQuickItem *last = lastVisible(u"toolLine"_s);
    last->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Space);
    EXPECT_TRUE(shows(u"https://a.example/"_s));
    EXPECT_TRUE(shows(u"<b>Page</b>"_s));
    EXPECT_TRUE(shows(u"Came back from outside"_s));
    m_window->resize(420, 760);
    settle();
    EXPECT_LT(lastVisible(u"toolSent"_s)->mapToScene({lastVisible(u"toolSent"_s)->width(), 0}).x(), 420);
    press(Qt::Key_Tab);
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard(), u"https://a.example/"_s);
    press(Qt::Key_Backtab);
    press(Qt::Key_Space);
    EXPECT_FALSE(shows(u"https://a.example/"_s)) << "it closes again";
}

TEST_F(ChatPageTest, AGrowingReplyKeepsWhatIsSelectedInIt)
{
    send();
    stream(u"First words"_s);
    QQuickItem *words = lastVisible(u"paragraph"_s);
    ASSERT_NE(words, nullptr);
    QMetaObject::invokeMethod(words, "select", Q_ARG(int, 0), Q_ARG(int, 5));
    words->forceActiveFocus();
    for (const auto &piece : {u" and"_s, u" **more**\n\nHere"_s}) {
        stream(piece);
        EXPECT_TRUE(words->property("text").toString().startsWith(u"First words and"_s));
        EXPECT_EQ(words->property("selectedText").toString(), u"First"_s);
    }
    const auto reply = m_app->presentation().chat->messages()->messages().back();
    reply->setContent(u"Fir"_s); // words that are taken back
    m_app->presentation().chat->messages()->messageChanged(reply->id());
    settle();
    EXPECT_EQ(words->property("text").toString(), u"Fir"_s);
}

TEST_F(ChatPageTest, AQuestionOfTheApplicationIsAnsweredOrClosed)
{
    QList<int> answers;
    const auto ask = [&] {
        m_app->presentation().shell->ask(u"Drop this Ghost chat?"_s, u"It goes."_s, {u"Drop"_s, u"Cancel"_s},
                                         [&](int button) { answers += button; });
        ASSERT_TRUE(eventually([this] { return shows(u"It goes."_s); }));
        settle();
    };
    ask();
    press(Qt::Key_Escape);
    ASSERT_TRUE(eventually([&] { return answers.size() == 1; }));
    ask();
    ASSERT_NE(named(u"Drop"_s), nullptr);
    click(named(u"Drop"_s));
    ASSERT_TRUE(eventually([&] { return answers.size() == 2; }));
    EXPECT_EQ(answers, QList<int>({-1, 0}));
}

TEST_F(ChatPageTest, NoticesStandOneAfterTheOtherUntilTheyAreAnswered)
{
    QList<int> answers;
    for (const QString &title : {u"First"_s, u"Second"_s}) {
        m_app->presentation().shell->tell(title, u"What to do."_s, {u"Do it"_s, u"Leave it"_s},
                                          [&](int button) { answers += button; });
    }
    for (const auto &[title, button] : {std::pair{u"First"_s, u"Leave it"_s}, {u"Second"_s, u"Do it"_s}}) {
        settle();
        EXPECT_TRUE(shows(title));
        ASSERT_NE(named(button), nullptr);
        click(named(button));
    }
    settle();
    EXPECT_EQ(answers, QList<int>({1, 0}));
    EXPECT_FALSE(item(u"notice"_s)->isVisible());
}

TEST_F(ChatPageTest, ASavedNoteIsTakenBackOrLeftAboveTheComposer)
{
    const auto button = [this](const QString &name) { return WindowDriver::item(m_window, name); };
    EXPECT_EQ(button(u"undoNote"_s), nullptr);
    m_app->assistant().memory->remember(u"Likes tea."_s);
    settle();
    EXPECT_TRUE(shows(u"Likes tea."_s));
    click(button(u"dismissNote"_s));
    EXPECT_EQ(button(u"undoNote"_s), nullptr);
    EXPECT_EQ(m_app->assistant().memory->facts().size(), 1U);
    m_app->assistant().memory->remember(u"Lives in Oslo."_s);
    settle();
    click(button(u"undoNote"_s));
    EXPECT_EQ(m_app->assistant().memory->facts().size(), 1U);

    m_app->assistant().memory->forget(u"tea"_s, m_app->presentation().chat->conversation()->scopeKey());
    settle();
    EXPECT_TRUE(shows(u"Note forgotten:"_s));
    const QString here = m_app->presentation().chat->conversationId();
    showReply(u"Another chat"_s);
    EXPECT_EQ(button(u"undoNote"_s), nullptr) << "it stays with its chat";
    m_app->presentation().chat->open(here);
    settle();
    click(button(u"undoNote"_s));
    EXPECT_EQ(m_app->assistant().memory->facts().size(), 1U);
}

TEST_F(ChatPageTest, AReplyThatFailedOrThatTheEndOfTheProgramCutOffIsTriedAgain)
{
    for (const auto status : {MessageStatus::failed, MessageStatus::streaming}) {
        showReply(u"half a"_s, [status](ChatMessage &reply) { reply.setStatus(status); });
        fail(ProviderError(ProviderError::Plain::networkUnavailable));
        click(item(u"dismissBanner"_s));
        m_clock.advance(1s);
        ASSERT_NE(lastVisible(u"retryReply"_s), nullptr);
        click(lastVisible(u"retryReply"_s));
        EXPECT_EQ(lastVisible(u"retryReply"_s), nullptr);
        EXPECT_TRUE(m_app->presentation().chat->isResponding());
    }
}

TEST_F(ChatPageTest, SuggestionsAreOfOneHeightWhereOneNeedsTwoLines)
{
    m_app->storage().settings->setChatTextSize(ChatTextSize::large);
    m_window->resize(820, 760);
    settle();
    std::set<double> heights;
    std::set<double> needed;
    for (const QQuickItem *card : allItems()) {
        if (card->objectName() != u"suggestion"_s)
            continue;
        heights.insert(card->height());
        needed.insert(card->implicitHeight());
    }
    EXPECT_EQ(heights.size(), 1U);
    EXPECT_GT(needed.size(), 1U);
}

} // namespace morvane
