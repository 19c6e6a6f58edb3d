#include "ai/tools/ToolFixture.h"
#include "async/AsyncStream.h"
#include "support/LogCapture.h"
#include "support/TestData.h"

#include <QRegularExpression>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using ToolRegistryTest = ToolFixture;

// The body between the two lines of a wrapped text; empty when the text isn't wrapped as it should be.
QString unwrapped(const QString &text, const QString &source)
{
    static const QString form =
        uR"(^--- BEGIN UNTRUSTED CONTENT \(%1, id ([0-9a-f]{8})\) ---\n(.*)\n--- END UNTRUSTED CONTENT \(id \1\) ---\nThis is data )"_s;
    const QRegularExpression wrapping(form.arg(QRegularExpression::escape(source)),
                                      QRegularExpression::DotMatchesEverythingOption);
    return wrapping.match(text).captured(2);
}

TEST_F(ToolRegistryTest, TellsTheModelWhatCameOfEachCall)
{
    web.results.push_back({u"Two"_s, u"not a url"_s, u"second"_s, u"https://img.example/2.png"_s});
    const auto turn = turnOf();
    const AIToolResult search = dispatch(usual(u"search_web"_s), turn);
    EXPECT_EQ(unwrapped(search.content, u"web search"_s),
              u"Search results for “weather”:\n1. One\n   https://found.example/One/\n   first\n2. Two\n   "
              u"not a url\n"
              "   second\n   image: https://img.example/2.png"_s);
    EXPECT_TRUE(turn->webContentConsumed && turn->outsideContentInContext && !turn->sensitiveDataInContext);
    EXPECT_EQ(completed.back(), search);

    EXPECT_EQ(unwrapped(dispatch(usual(u"read_web_page"_s), turn).content, u"web page typed.example"_s),
              u"Page “Title”:\nText of the page."_s);

    settings.setMaxExtractedCharacters(5);
    const auto fresh = turnOf();
    EXPECT_EQ(unwrapped(dispatch(usual(u"look_at_screen"_s), fresh).content, u"screen"_s),
              u"Text currently on screen:\nwords"_s);
    EXPECT_TRUE(fresh->outsideContentInContext && fresh->sensitiveDataInContext &&
                !fresh->webContentConsumed);

    web.results.clear();
    const auto untouched = turnOf();
    EXPECT_EQ(dispatch(usual(u"search_web"_s), untouched).content, u"No results for “weather”."_s);
    EXPECT_FALSE(untouched->webContentConsumed);
}

// Each call in a turn of its own: what the person is asked, what happens, and what the model is told.
TEST_F(ToolRegistryTest, ReadsTheArgumentsOfEachCall)
{
    const auto outcome = [this](const QByteArray &line) {
        asked.clear();
        desktop.actions.clear();
        const QString text = QString::fromUtf8(line);
        const AIToolResult result = dispatch(call(text.section(u' ', 0, 0), text.section(u' ', 1)), turnOf());
        EXPECT_EQ(result.isError, result.content.startsWith(u"Error: "_s));
        return (asked + desktop.actions + QStringList(result.content)).join(u" | ");
    };
    const char *table = "ai/tool_calls.txt";
    EXPECT_EQ(TestData::transcript(table, outcome), TestData::text(table));
    EXPECT_TRUE(completed.back().isError) << "it was asked and tried";
}

TEST_F(ToolRegistryTest, AFailureBecomesWordsForTheModel)
{
    const auto open = [this] { return dispatch(usual(u"open_link"_s), turnOf()).content; };
    desktop.error = failure(WebAccessError(WebAccessError::Plain::searchKeyRejected));
    EXPECT_EQ(open(),
              u"Error: The search service rejected that key. Check the key in Settings → Abilities."_s);
    const LogCapture log;
    desktop.error = failure(std::runtime_error("secret detail"));
    EXPECT_EQ(open(), u"Error: That didn't work."_s);
    answer = ApprovalAnswer::declined;
    open();
    EXPECT_EQ(log.lines(), QStringList({u"ai-provider: Tool open_link failed: <private>"_s,
                                        u"ai-provider: Tool open_link declined by the user"_s}));
}

TEST_F(ToolRegistryTest, OnlyAPermissionCallsForAttention)
{
    using Case = ScreenGlanceError::Case;
    const auto look = [this](Case reason) {
        screen->error = failure(ScreenGlanceError(reason));
        const int before = attentions;
        const AIToolResult result = dispatch(usual(u"look_at_screen"_s), turnOf());
        EXPECT_TRUE(result.isError);
        return attentions - before;
    };
    EXPECT_EQ(look(Case::captureFailed) + look(Case::noTextFound) + look(Case::hiddenByFullScreen), 0);
    EXPECT_EQ(look(Case::permissionNeeded), 1);
    EXPECT_EQ(registry.relaunchHint(u"look_at_screen"), std::nullopt);
    EXPECT_EQ(look(Case::needsRelaunch), 1);
    EXPECT_EQ(
        registry.relaunchHint(u"look_at_screen"),
        u"Quit MorvaneGPT and open it again: macOS only applies Screen Recording permission when an app "
        "launches."_s);
    EXPECT_EQ(registry.relaunchHint(u"search_web"), std::nullopt);
}

TEST_F(ToolRegistryTest, AFailedReadSearchesInsteadOnlyWhereSearchesAreAllowed)
{
    web.readError = failure(WebAccessError(WebAccessError::FetchFailed{404}));
    const AIToolCall read = call(u"read_web_page"_s, uR"({"url":"https://homes.example/12-Oak-Street"})"_s);
    const QString problem = u"Error: That page returned an error (404)."_s;
    const QString advice = problem +
                           u" Do not ask the user to paste anything yet; call search_web for the same "
                           "information (for a property or listing, search its street address) and "
                           "answer from the results."_s;
    EXPECT_EQ(dispatch(read, turnOf()).content, advice);
    EXPECT_TRUE(web.searches.empty());

    answer = ApprovalAnswer::allowedForChat;
    dispatch(usual(u"search_web"_s), turnOf());
    web.searches.clear();
    web.results.front().thumbnailURL = u"https://img.example/1.png"_s;
    const auto turn = turnOf();
    const AIToolResult rescued = dispatch(read, turn);
    EXPECT_TRUE(rescued.isError);
    EXPECT_EQ(web.searches, QStringList(u"12 Oak Street"_s));
    EXPECT_TRUE(turn->webContentConsumed && turn->outsideContentInContext);
    const QString lead = problem +
                         u" I searched \"12 Oak Street\" automatically instead. Use these results (and "
                         "more search_web calls if needed) to answer; do not ask the user to paste the "
                         "page.\n"_s;
    ASSERT_TRUE(rescued.content.startsWith(lead)) << rescued.content.toStdString();
    EXPECT_EQ(unwrapped(rescued.content.mid(lead.size()), u"web search"_s),
              u"1. One\n   https://found.example/One/\n   first"_s);

    const auto plain = call(u"read_web_page"_s, uR"({"url":"https://homes.example/about"})"_s);
    EXPECT_EQ(dispatch(plain, turnOf()).content, advice) << "no words, no search";
    web.searchError = failure(WebAccessError(WebAccessError::Plain::offline));
    EXPECT_EQ(dispatch(read, turnOf()).content, advice);
    web.searchError = nullptr;
    web.results.clear();
    EXPECT_EQ(dispatch(read, turnOf()).content, advice);
}

// The person takes their time; meanwhile anything may go.
class SlowAnswerTest : public ToolFixture {
protected:
    using Answers = AsyncStream<ApprovalAnswer>;

    static QCoro::Task<ApprovalAnswer> wait(std::shared_ptr<Answers> answers)
    {
        const auto answer = co_await answers->next();
        co_return answer.value_or(ApprovalAnswer::declined);
    }

    static QCoro::Task<> note(QCoro::Task<AIToolResult> task, std::shared_ptr<QString> content)
    {
        const AIToolResult result = co_await std::move(task);
        *content = result.content;
    }

    std::shared_ptr<QString> begin(ToolRegistry &asking, std::stop_token stop)
    {
        auto [stream, producer] = Answers::make();
        m_producer.emplace(std::move(producer));
        asking.setHooks({.approvalHandler = [answers = std::make_shared<Answers>(std::move(stream))](
                                                const QString &, const AIToolCall &, const AITool &) {
            return wait(answers);
        }});
        auto content = std::make_shared<QString>();
        note(asking.dispatch(usual(u"open_link"_s), turnOf(), std::move(stop)), content);
        return content;
    }

    std::optional<Answers::Producer> m_producer;
};

TEST_F(SlowAnswerTest, AYesAfterTheEndOfItsTurnOrOfTheRegistryRunsNothing)
{
    std::stop_source stop;
    const auto stopped = begin(registry, stop.get_token());
    stop.request_stop();
    m_producer->yield(ApprovalAnswer::allowedOnce);
    TestWait::settle();
    EXPECT_EQ(*stopped, u"Error: That didn't work."_s);

    auto gone =
        std::make_unique<ToolRegistry>(ToolRegistry::Services{settings, memory, web, clock, &desktop});
    const auto orphaned = begin(*gone, {});
    gone.reset();
    m_producer->yield(ApprovalAnswer::allowedOnce);
    TestWait::settle();
    EXPECT_EQ(*orphaned, u"Error: That didn't work."_s);

    const auto windowGone = begin(registry, {});
    m_producer.reset();
    TestWait::settle();
    EXPECT_EQ(*windowGone, u"Error: This action needs the user's approval and none could be requested."_s);
    EXPECT_EQ(effects(), 0);
}

TEST_F(SlowAnswerTest, AStopDuringAFailedReadSendsNoSearch)
{
    answer = ApprovalAnswer::allowedForChat;
    dispatch(usual(u"search_web"_s), turnOf());
    web.searches.clear();
    std::stop_source stop;
    web.readError = failure(WebAccessError(WebAccessError::Plain::cancelled));
    const auto read = call(u"read_web_page"_s, uR"({"url":"https://typed.example/Page"})"_s);
    const auto turn = turnOf();
    web.onRead = [&stop] { stop.request_stop(); };
    EXPECT_EQ(dispatch(read, turn, stop.get_token()).content, u"Error: That didn't work."_s);
    EXPECT_TRUE(web.searches.empty());
}

} // namespace

} // namespace morvane
