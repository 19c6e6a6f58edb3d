#include "ai/agent/AgentLoop.h"

#include "ai/agent/AgentFixture.h"
#include "ai/agent/ReplyPhrases.h"
#include "support/TestData.h"

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = ProviderError::Plain;
using Round = ScriptedModel::Round;

namespace {

const AIStreamEvent limit = AIStream::TruncatedByTokenLimit{};

AIStreamEvent text(const QString &piece)
{
    return AIStream::Text{piece};
}

AIStreamEvent calls(const QStringList &names)
{
    std::vector<AIToolCall> all;
    for (const QString &name : names)
        all.push_back(
            {u"id-"_s + name, name, uR"({"query":"weather","url":"https://typed.example/Page"})"_s});
    return AIStream::ToolCalls{all};
}

AgentEvent retraction(qsizetype count)
{
    return Agent::RetractText{count};
}

class AgentLoopTest : public ToolFixture {
protected:
    AgentLoop::Turn turn()
    {
        AgentLoop::Turn turn;
        turn.messages = {{.role = AIMessage::Role::system, .content = u"Be kind."_s},
                         {.role = AIMessage::Role::user, .content = u"Read https://typed.example/Page"_s}};
        turn.tools = registry.availableTools();
        turn.memoryAllowed = true;
        turn.scopeKey = u"chat:A"_s;
        return turn;
    }

    PlayedRun play(std::vector<Round> rounds) { return play(std::move(rounds), turn()); }
    PlayedRun play(std::vector<Round> rounds, AgentLoop::Turn turn)
    {
        model = std::make_shared<ScriptedModel>(std::move(rounds));
        return readRun(AgentLoop(model, registry).run(std::move(turn)));
    }

    [[nodiscard]] const AIMessage &lastMessage(std::size_t round) const
    {
        return model->requests.at(round).messages.back();
    }

    std::shared_ptr<ScriptedModel> model;
};

TEST_F(AgentLoopTest, RunsCallsInOrderAndFeedsTheirResultsBack)
{
    const QString ahead = u"👻 moment"_s; // eight characters of nine units
    AgentLoop::Turn withoutLinks = turn();
    std::erase_if(withoutLinks.tools, [](const AITool &tool) { return tool.name == u"open_link"_s; });
    const QUuid row = QUuid::createUuid();
    QUuid recorded;
    withoutLinks.onRecorded = [&](const QUuid &later) { recorded = later; };
    const PlayedRun run =
        play({{{text(u"<think>I can't look that up.</think>"_s + ahead), limit,
                calls({u"look_at_screen"_s, u"open_link"_s, u"read_web_page"_s})}},
              {{AIStream::Recorded{row}, AIStream::Thinking{}, text(u"The "_s), text(u"answer."_s)}}},
             withoutLinks);
    ASSERT_EQ(run.events.size(), 9U);
    EXPECT_EQ(recorded, row);
    EXPECT_EQ(run.events[1], retraction(8 + 36));
    EXPECT_TRUE(std::holds_alternative<Agent::ToolStarted>(run.events[2]));
    EXPECT_EQ(std::get<Agent::ToolFinished>(run.events[3]).call.name, u"look_at_screen"_s);
    EXPECT_EQ(std::get<Agent::ToolStarted>(run.events[4]).call.name, u"read_web_page"_s)
        << "links weren't offered";
    EXPECT_TRUE(std::holds_alternative<Agent::Thinking>(run.events[6]));
    EXPECT_EQ(run.error, std::nullopt);
    EXPECT_EQ(asked, QStringList(u"Read your screen"_s)) << "the page's address was typed";

    const auto &messages = model->requests.at(1).messages;
    ASSERT_EQ(messages.size(), 6U);
    EXPECT_EQ(messages[2].content, ahead) << "what it thought isn't sent back";
    EXPECT_EQ(messages[2].toolCalls.size(), 3U);
    EXPECT_EQ(messages[3].content, run.results().value(0));
    EXPECT_EQ(
        messages[4],
        (AIMessage{.role = AIMessage::Role::tool,
                   .content =
                       u"Error: The open_link ability is not available in this conversation. Do not call it "
                       "again; answer with what you have."_s,
                   .toolCallID = u"id-open_link"_s,
                   .toolName = u"open_link"_s}));
    EXPECT_EQ(messages[5].toolCallID, u"id-read_web_page"_s);
    EXPECT_EQ(model->requests.at(1).tools.size(), 7U);
}

TEST_F(AgentLoopTest, TheCeilingGivesOneRoundWithoutToolsWhoseCallsAreNotHeard)
{
    answer = ApprovalAnswer::allowedForChat;
    const PlayedRun run = play({{{text(u"x"_s), limit, calls({u"search_web"_s})}}});
    ASSERT_EQ(model->requests.size(), 6U);
    EXPECT_FALSE(model->requests[4].tools.empty());
    EXPECT_TRUE(model->requests[5].tools.empty());
    EXPECT_TRUE(lastMessage(5).content.startsWith(u"You have used all available tool calls"_s));
    EXPECT_EQ(happened.size(), 5);
    EXPECT_EQ(run.shown(), u"x"_s);
    EXPECT_EQ(run.events.back(), AgentEvent(Agent::TruncatedByTokenLimit{})) << "of the last reply only";
    EXPECT_EQ(run.error, std::nullopt);
    EXPECT_EQ(play({{{calls({u"search_web"_s})}}}).error, ProviderError(Plain::emptyResponse));
}

TEST_F(AgentLoopTest, ADeclinedSearchIsTakenBackOnce)
{
    const QString refusal = u"Sorry, I CAN'T look that up."_s;
    const PlayedRun run = play({{{text(refusal)}}, {{text(refusal)}}});
    EXPECT_EQ(run.events, (std::vector<AgentEvent>{Agent::Text{refusal}, retraction(refusal.size()),
                                                   Agent::Text{refusal}}));
    const auto &messages = model->requests.at(1).messages;
    EXPECT_EQ(messages[2], (AIMessage{.role = AIMessage::Role::assistant, .content = refusal}));
    EXPECT_TRUE(messages[3].content.startsWith(u"Correction: you CAN look that up."_s));
    EXPECT_EQ(messages[3].role, AIMessage::Role::system);

    EXPECT_EQ(play({{{text(u"<think>"_s + refusal + u"</think>It is 3."_s)}}}).events.size(), 1U)
        << "it only thought so";
    settings.setWebAccessEnabled(false);
    EXPECT_EQ(play({{{text(refusal)}}}).events.size(), 1U) << "without a search there is nothing to correct";
}

TEST_F(AgentLoopTest, AClaimedEventIsTakenBackUnlessOneWasMade)
{
    const QString claim = u"I've scheduled it. I can't search."_s;
    const PlayedRun both = play({{{text(claim)}}});
    ASSERT_EQ(model->requests.size(), 3U) << "each correction is granted once";
    EXPECT_TRUE(lastMessage(1).content.startsWith(u"Correction: you CAN look"_s));
    EXPECT_TRUE(lastMessage(2).content.startsWith(u"Correction: you said you scheduled"_s));
    EXPECT_EQ(both.shown(), claim);

    const QString plain = u"Done, added to your calendar."_s;
    play({{{calls({u"create_calendar_event"_s})}}, {{text(plain)}}});
    EXPECT_EQ(model->requests.size(), 2U) << "the tool was called, whatever came of it";
    play({{{text(plain + u" Want me to add another?"_s)}}});
    EXPECT_EQ(model->requests.size(), 1U) << "an offer is no claim";
    settings.setDesktopActionsEnabled(false);
    play({{{text(plain)}}});
    EXPECT_EQ(model->requests.size(), 1U);
}

TEST_F(AgentLoopTest, AServerThatRejectsToolsIsAskedWithoutThem)
{
    const ProviderError rejection =
        ProviderError(ProviderError::ServerError{400}).quoting(u"no tools here"_s);
    const PlayedRun run = play({{{}, rejection}, {{text(u"Whole"_s), text(u"."_s)}}});
    EXPECT_EQ(run.events, (std::vector<AgentEvent>{Agent::ToolsRejected{}, Agent::Text{u"Whole"_s},
                                                   Agent::Text{u"."_s}}));
    EXPECT_TRUE(model->requests.at(1).tools.empty());
    EXPECT_TRUE(lastMessage(1).content.startsWith(u"Correction: the model server running you does not"_s));
    EXPECT_EQ(play({{{}, rejection}}).error, rejection) << "once";
    EXPECT_EQ(model->requests.size(), 2U);
    EXPECT_EQ(play({{{text(u"Half "_s)}, rejection}}).error, rejection) << "no second answer";
    EXPECT_EQ(model->requests.size(), 1U);
    EXPECT_EQ(play({{{calls({u"search_web"_s})}}, {{}, rejection}}).error, rejection) << "it has called one";
    EXPECT_EQ(model->requests.size(), 2U);

    AgentLoop::Turn bare = turn();
    bare.tools.clear();
    EXPECT_EQ(play({{{}, rejection}}, bare).error, rejection);
    EXPECT_EQ(model->requests.size(), 1U);
    const ProviderError other(ProviderError::ServerError{500});
    EXPECT_EQ(play({{{}, other}, {{text(u"Whole."_s)}}}).error, other);
}

TEST_F(AgentLoopTest, TheUsersWordsDecideWhatTheyTyped)
{
    const std::vector<Round> rounds{{{calls({u"read_web_page"_s})}}, {{text(u"Read."_s)}}};
    AgentLoop::Turn told = turn();
    told.userWords = u"Read the page in my document"_s;
    play(rounds, told);
    EXPECT_EQ(asked, QStringList(u"Read this page"_s));
    asked.clear();
    play(rounds);
    EXPECT_EQ(asked, QStringList()) << "without them, all that stands as theirs counts";

    told.attendance = TurnContext::Attendance::unattended;
    EXPECT_TRUE(play(rounds, told).results().value(0).contains(u"nobody is here"_s));
    EXPECT_EQ(asked, QStringList());
}

TEST_F(AgentLoopTest, DroppingTheReplyEndsItBeforeTheNextCall)
{
    std::optional<AsyncStream<AgentEvent>> stream;
    world->onRead = [&stream] { stream.reset(); };
    model = std::make_shared<ScriptedModel>(
        std::vector<Round>{{{calls({u"look_at_screen"_s, u"read_web_page"_s, u"open_link"_s})}}});
    stream.emplace(AgentLoop(model, registry).run(turn()));
    TestWait::settle();
    EXPECT_EQ(happened.size(), 2) << "no link was opened";
    EXPECT_EQ(model->requests.size(), 1U);
}

TEST(ReplyPhrasesTest, AreSoughtInAnyLetterCaseAndAnywhere)
{
    const auto outcome = [](const QByteArray &line) {
        const QString reply = QString::fromUtf8(line);
        return (ReplyPhrases::refusesSearch(reply) ? u"refuses a search"_s : QString()) +
               (ReplyPhrases::claimsScheduling(reply) ? u"claims an event"_s : QString());
    };
    TestData::expect("ai/reply_phrases.txt", outcome);
}

} // namespace

} // namespace morvane
