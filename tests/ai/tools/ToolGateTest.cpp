#include "ai/tools/ToolFixture.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using ToolGateTest = ToolFixture;

QString argument(const QString &name, const QString &value)
{
    return uR"({"%1":"%2"})"_s.arg(name, value);
}

TEST_F(ToolGateTest, CallsThatNeverReachAPersonAreRefusedInOrder)
{
    settings.setScreenAwarenessEnabled(false);
    const auto turn = turnOf();
    turn->webContentConsumed = true;
    EXPECT_TRUE(dispatch(usual(u"look_at_screen"_s), turn)
                    .content.startsWith(u"Error: Screen reading is not available in a turn"_s))
        << "web content closes the screen before its switch is asked";
    EXPECT_EQ(dispatch(usual(u"look_at_screen"_s), turnOf()).content,
              u"Error: The look_at_screen ability is unavailable. Turn on Screen awareness."_s);
    settings.setAbilitiesEnabled(false);
    EXPECT_EQ(dispatch(usual(u"look_at_screen"_s), turnOf()).content,
              u"Error: The look_at_screen ability is unavailable. Abilities are switched off."_s);

    EXPECT_TRUE(
        dispatch(usual(u"open_link"_s))
            .content.startsWith(u"Error: This action needs the user's approval and nobody is here"_s));
    registry.setHooks({});
    EXPECT_EQ(dispatch(usual(u"open_link"_s), turnOf()).content,
              u"Error: This action needs the user's approval and none could be requested."_s);
    EXPECT_EQ(effects(), 0);
    EXPECT_TRUE(asked.empty());
    EXPECT_TRUE(completed.empty()) << "refusals never reached execution";
}

TEST_F(ToolGateTest, ANoRunsNothingAndAYesRunsOnce)
{
    const auto turn = turnOf();
    answer = ApprovalAnswer::declined;
    EXPECT_EQ(dispatch(usual(u"open_link"_s), turn).content,
              u"Error: The user declined. Do not try again; ask them what they'd prefer."_s);
    EXPECT_TRUE(turn->approvedOnce.empty());
    answer = ApprovalAnswer::allowedForChat;
    EXPECT_EQ(dispatch(usual(u"open_link"_s), turn).content, u"Opened."_s);
    EXPECT_EQ(turn->approvedOnce, std::set<QString>{u"open_link"_s});
    EXPECT_TRUE(registry.searchAllowedChats().empty()) << "a yes to a link is none to searches";
    EXPECT_EQ(asked, QStringList({u"Open this link"_s, u"Open this link"_s}));
    EXPECT_EQ(desktop.actions.size(), 1);
    EXPECT_EQ(completed.size(), 1U);
}

TEST_F(ToolGateTest, SearchesAskOnceForAChatThatAllowsThem)
{
    const auto ask = [this](std::optional<QString> chat) {
        const auto turn = TurnContext::begin(TurnContext::Attendance::attended, std::move(chat),
                                             TurnContext::Notes::kept, {}, {});
        EXPECT_FALSE(dispatch(usual(u"search_web"_s), turn).isError);
    };
    ask(u"chat:A"_s);
    ask(std::nullopt);
    answer = ApprovalAnswer::allowedForChat;
    ask(std::nullopt);
    ask(u"chat:A"_s);
    ask(u"chat:A"_s);
    ask(u"chat:B"_s);
    const QString verb = u"Search the web for this"_s;
    EXPECT_EQ(asked, QStringList({verb + u'+', verb, verb, verb + u'+', verb + u'+'}));
    EXPECT_EQ(registry.searchAllowedChats(), (std::set<QString>{u"chat:A"_s, u"chat:B"_s}));
    const ToolRegistry restarted({settings, memory, web, clock});
    EXPECT_TRUE(restarted.searchAllowedChats().empty());
}

TEST_F(ToolGateTest, LimitsAreCountedInCharacters)
{
    const QString family = u"👨‍👩‍👧"_s; // one character of eight units
    EXPECT_FALSE(
        dispatch(call(u"search_web"_s, argument(u"query"_s, family.repeated(400))), turnOf()).isError);
    EXPECT_EQ(dispatch(call(u"search_web"_s, argument(u"query"_s, family.repeated(401))), turnOf()).content,
              u"Error: Search queries must be under 400 characters. Search for the topic in a few words."_s);
    const QString stem = u"https://a.example/"_s;
    EXPECT_FALSE(
        dispatch(call(u"read_web_page"_s, argument(u"url"_s, stem + QString(1000 - stem.size(), u'x'))),
                 turnOf())
            .isError);
    for (const QString &url : {stem + QString(1001 - stem.size(), u'x'), u"two words"_s, u""_s})
        EXPECT_EQ(dispatch(call(u"read_web_page"_s, argument(u"url"_s, url)), turnOf()).content,
                  u"Error: That address is not one that can be read."_s);
}

TEST_F(ToolGateTest, OnlyAPageThatThePersonNamedIsReadUnasked)
{
    const auto read = [this](const QString &url, const std::shared_ptr<TurnContext> &turn) {
        asked.clear();
        EXPECT_FALSE(dispatch(call(u"read_web_page"_s, argument(u"url"_s, url)), turn).isError);
        return asked.value(0);
    };
    EXPECT_EQ(read(u"HTTPS://TYPED.example/page/"_s, turnOf()), QString());
    EXPECT_EQ(read(u"https://typed.example/Page?q=1"_s, turnOf()), u"Read this page"_s);
    EXPECT_EQ(read(u"https://found.example/One/"_s, turnOf()), u"Read this page"_s);

    const auto found = [this] {
        auto turn = turnOf();
        dispatch(usual(u"search_web"_s), turn);
        EXPECT_TRUE(turn->knownHosts.contains(u"found.example"_s));
        return turn;
    };
    EXPECT_EQ(read(u"https://found.example/one"_s, found()), QString());
    auto sensitive = found();
    sensitive->sensitiveDataInContext = true;
    EXPECT_EQ(read(u"https://found.example/One"_s, sensitive), u"Read this page from the search results"_s);
    EXPECT_EQ(read(u"https://typed.example/Page"_s, sensitive), QString());
    memory.record(u"Likes tea"_s);
    EXPECT_EQ(read(u"https://found.example/One"_s, found()), u"Read this page from the search results"_s);
    auto keepsNone = found();
    keepsNone->memoryAllowed = false;
    EXPECT_EQ(read(u"https://found.example/One"_s, keepsNone), QString());
    EXPECT_EQ(web.lastLimit, 6000);
}

TEST_F(ToolGateTest, AnAttachedDocumentsAddressIsNotOneThatThePersonTyped)
{
    const std::vector<AIMessage> messages{
        {.role = AIMessage::Role::user,
         .content = u"--- BEGIN UNTRUSTED CONTENT (document, id 1) ---\nhttps://evil.example/ ..."_s}};
    const auto turn = turnOf(TurnContext::Attendance::attended, messages);
    EXPECT_FALSE(turn->knownURLs.contains(u"https://evil.example"_s));
    EXPECT_TRUE(turn->outsideContentInContext && turn->sensitiveDataInContext);
    dispatch(call(u"read_web_page"_s, argument(u"url"_s, u"https://evil.example/"_s)), turn);
    EXPECT_EQ(asked, QStringList(u"Read this page"_s));
}

TEST_F(ToolGateTest, ForgettingManyNotesAsksAndOneDoesNot)
{
    for (const auto &note : {u"Drinks coffee"_s, u"Hates coffee breaks"_s, u"Has a cat"_s})
        memory.record(note);
    const auto unattended = turnOf(TurnContext::Attendance::unattended);
    EXPECT_TRUE(dispatch(usual(u"forget"_s), unattended).isError);
    EXPECT_EQ(memory.facts().size(), 3U);
    EXPECT_EQ(dispatch(call(u"forget"_s, argument(u"about"_s, u"cat"_s)), unattended).content,
              u"Forgot 1 note(s): Has a cat"_s);
    EXPECT_EQ(dispatch(usual(u"forget"_s), turnOf()).content,
              u"Forgot 2 note(s): Drinks coffee; Hates coffee breaks"_s);
    EXPECT_EQ(asked, QStringList(u"Forget these notes"_s));
    EXPECT_TRUE(dispatch(usual(u"forget"_s)).content.startsWith(u"Error: This chat keeps no notes"_s));
}

TEST_F(ToolGateTest, ATurnSavesTwoNotes)
{
    const auto turn = turnOf();
    const auto remember = [&](const QString &fact) {
        return dispatch(call(u"remember"_s, argument(u"fact"_s, fact)), turn).content;
    };
    EXPECT_EQ(remember(u"  One.  "_s), u"Saved: One."_s);
    EXPECT_EQ(remember(QString(300, u'x')), u"Saved: "_s + QString(240, u'x'));
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(remember(u"Three."_s),
                  u"Error: Enough has been saved this turn. Do not call remember again now."_s);
    EXPECT_EQ(turn->rememberCalls, 4);
    EXPECT_EQ(memory.facts().size(), 2U);
    EXPECT_EQ(memory.receipts().size(), 2U);

    const auto keepsNone = std::make_shared<TurnContext>();
    EXPECT_TRUE(
        dispatch(usual(u"remember"_s), keepsNone).content.startsWith(u"Error: This chat keeps no notes"_s));
    EXPECT_EQ(keepsNone->rememberCalls, 0);
}

} // namespace

} // namespace morvane
