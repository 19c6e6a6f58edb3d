#include "end_to_end/AppFixture.h"

#include "support/ProcessMemory.h"
#include "view_models/chat/ChatViewModel.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

struct Row {
    const char *model;
    const char *banner; // null: the reply is delivered
};

constexpr const char *unreadable = "The AI provider sent a response that could not be read.";
constexpr const char *unreachable = "The AI provider could not be reached.";

class BadServerTest : public AppFixture, public testing::WithParamInterface<Row> {};

TEST_P(BadServerTest, EndsInAnErrorOfItsOwnAndLosesNothingOfThePersons)
{
    useModel(QString::fromLatin1(GetParam().model));
    say(u"Keep this question"_s);
    WindowDriver::type(window(), u"and this draft"_s); // while the reply is under way
    ASSERT_TRUE(turnEnds());
    const auto *messages = state->presentation().chat->messages();
    EXPECT_EQ(messages->index(0).data(MessageListModel::TextRole), u"Keep this question"_s);
    EXPECT_EQ(state->presentation().chat->draft(), u"and this draft"_s);
    EXPECT_EQ(state->presentation().chat->banner().message, QString::fromUtf8(GetParam().banner));
    EXPECT_EQ(lastRow(MessageListModel::FailedRole).toBool(), GetParam().banner != nullptr);
    EXPECT_FALSE(lastRow(MessageListModel::RunningRole).toBool());

    useModel(u"practice-fast"_s);
    WindowDriver::press(window(), Qt::Key_Return);
    ASSERT_TRUE(turnEnds());
    EXPECT_FALSE(state->presentation().chat->hasBanner()) << "the next turn works as ever";
}

INSTANTIATE_TEST_SUITE_P(
    EveryKind, BadServerTest,
    testing::Values(Row{"garbage", unreadable}, Row{"not-http", unreachable},
                    Row{"cut-mid-character", unreachable}, Row{"cut-mid-json", unreachable},
                    Row{"redirect-file", unreachable}, Row{"redirect-loop", unreachable},
                    Row{"status-401", "The AI provider rejected the API key."},
                    Row{"status-429", "The AI provider is rate-limiting requests."},
                    Row{"status-500", "The AI provider returned an error (HTTP 500)."},
                    Row{"huge-error-body", "The AI provider returned an error (HTTP 500)."},
                    Row{"huge-line", "The AI provider sent more than MorvaneGPT reads in one reply."},
                    Row{"no-ending", "The reply broke off before its end."},
                    Row{"error-mid-stream", "The AI provider broke this reply off with an error."},
                    Row{"json-despite-stream", nullptr}, Row{"no-done", nullptr}, Row{"crlf", nullptr}),
    [](const auto &row) {
        std::string name = row.param.model;
        std::replace(name.begin(), name.end(), '-', '_');
        return name;
    });

} // namespace

} // namespace morvane
