#include "documents/ImportedAttachment.h"
#include "end_to_end/AppFixture.h"

#include "view_models/chat/ChatViewModel.h"
#include "view_models/chat/ToolLabels.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

struct Service {
    const char *name;
    QStringList options;
    const char *toolless; // a model that takes no tools, in this service's words
    const char *sightless;
    const char *pictureBanner;
};

// A server of an age that doesn't tell what its models can do, so that it is tried.
QStringList untellingOllama()
{
    QStringList options{u"--ollama"_s};
    for (const auto &model : {u"agent-search"_s, u"agent-refuses-search"_s, u"agent-overflows"_s,
                              u"reject-tools"_s, u"practice-fast"_s, u"images-refused"_s, u"context-full"_s})
        options += {u"--model"_s, uR"({"name": "%1", "scenario": "%1"})"_s.arg(model)};
    return options;
}

void PrintTo(const Service &service, std::ostream *out)
{
    *out << service.name;
}

constexpr const char *tooLong = "This chat is longer than the model can take in.";

// The agent loop through the real program and the services that people have: what each takes, and the words
// in which it refuses the rest.
class AgentDialectsTest : public AppFixture, public testing::WithParamInterface<Service> {
protected:
    AgentDialectsTest()
        : AppFixture(GetParam().options)
    {}

    ChatViewModel &chat() { return *state->presentation().chat; }

    // Says yes to what is asked, and returns how many replies the server was asked for.
    std::ptrdiff_t ask(const char *model, const std::optional<ImportedAttachment> &attachment = {})
    {
        const auto before = replies();
        useModel(QString::fromLatin1(model));
        chat().newConversation();
        chat().sendMessage(u"Tell me about ferns"_s, attachment);
        EXPECT_TRUE(WindowDriver::eventually([this] {
            if (chat().hasApproval())
                chat().approveForChat();
            return !chat().isResponding() && chat().turnsInFlight() == 0;
        })) << model;
        return replies() - before;
    }
    std::ptrdiff_t replies()
    {
        return std::ranges::count_if(server.requests(), [](const ModelServer::Request &request) {
            return request.target.endsWith("/chat") || request.target.endsWith("/chat/completions");
        });
    }
    [[nodiscard]] QStringList toolLines() const
    {
        return lastRow(MessageListModel::ToolLinesRole).toStringList();
    }
};

TEST_P(AgentDialectsTest, AnswersWithToolsAndWithoutThemSaysSo)
{
    ask("agent-search");
    EXPECT_TRUE(lastText().startsWith(u"The practice server was told: “"_s)) << lastText().toStdString();
    EXPECT_TRUE(toolLines().first().startsWith(u"Searched the web for"_s));

    ask("agent-refuses-search"); // a service may teach a spelling in each turn
    EXPECT_EQ(ask("agent-refuses-search"), 3);
    EXPECT_TRUE(lastText().contains(u"Search results for “Tell me about ferns”"_s))
        << lastText().toStdString();

    ask(GetParam().toolless);
    EXPECT_EQ(ask(GetParam().toolless), 2);
    EXPECT_FALSE(chat().hasBanner());
    EXPECT_TRUE(lastText().contains(u"practice server"_s));
    EXPECT_EQ(toolLines(), QStringList(ToolLabels::rejected()));
}

TEST_P(AgentDialectsTest, SaysWhyAPictureOrATooLongChatIsRefusedAndAsksNoSecondTime)
{
    ask("practice-fast"); // what this service calls things is known from here on
    EXPECT_EQ(ask(GetParam().sightless, ImportedAttachment{.id = QUuid::createUuid(),
                                                           .filename = u"fern.jpg"_s,
                                                           .fileExtension = u"image"_s,
                                                           .imageData = QByteArray("jpeg")}),
              1);
    EXPECT_EQ(chat().banner().message, QString::fromUtf8(GetParam().pictureBanner));
    EXPECT_FALSE(chat().banner().quotation.isEmpty());

    ask("context-full");
    EXPECT_EQ(ask("context-full"), 1);
    EXPECT_EQ(chat().banner().message, QString::fromUtf8(tooLong));
    EXPECT_EQ(toolLines(), QStringList());

    ask("agent-overflows");
    EXPECT_EQ(ask("agent-overflows"), 2);
    EXPECT_EQ(chat().banner().message, QString::fromUtf8(tooLong));
    EXPECT_TRUE(lastRow(MessageListModel::FailedRole).toBool());
    ASSERT_EQ(toolLines().size(), 1) << "the search was made, and nobody says that there are no tools";
    EXPECT_TRUE(toolLines().first().startsWith(u"Searched the web for"_s));
}

INSTANTIATE_TEST_SUITE_P(Each, AgentDialectsTest,
                         testing::Values(Service{"StrictCloud",
                                                 {u"--strict"_s, u"cloud"_s},
                                                 "reject-tools",
                                                 "practice-fast",
                                                 "The AI provider returned an error (HTTP 400)."},
                                         Service{"LlamaCpp",
                                                 {u"--strict"_s, u"llama"_s},
                                                 "tools-need-flag",
                                                 "practice-fast",
                                                 "The AI provider returned an error (HTTP 500)."},
                                         Service{"Ollama", untellingOllama(), "reject-tools",
                                                 "images-refused", "This model can't see images."}),
                         [](const auto &row) { return std::string(row.param.name); });

} // namespace

} // namespace morvane
