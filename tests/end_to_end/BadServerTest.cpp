// Turns with every scenario of the model server, and with the services that people have: what each takes, and
// the words in which it refuses the rest.

#include "end_to_end/AppFixture.h"

#include "documents/ImportedAttachment.h"
#include "models/ChatMessage.h"
#include "network/NetworkLedger.h"
#include "support/TestData.h"
#include "view_models/chat/ChatViewModel.h"

#include <QProcess>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr const char *replying = "end_to_end/replying_servers.txt";
constexpr const char *broken = "end_to_end/broken_servers.txt";

struct Service {
    const char *table;
    QStringList options;

    friend void PrintTo(const Service &service, std::ostream *out) { *out << service.table; }
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

class EveryServerTest : public AppFixture, public testing::WithParamInterface<Service> {
protected:
    EveryServerTest()
        : AppFixture(GetParam().options)
    {}

    [[nodiscard]] NetworkLedger::Snapshot ledger() const
    {
        return state->assistant().networkLedger->snapshot();
    }

    // Says yes to what is asked, and stops what would never end or too late.
    void letTurnEnd(const QString &model, std::size_t requestsBefore)
    {
        const bool isStopped = model.startsWith(u"stall-"_s) || model == u"slow"_s;
        EXPECT_TRUE(WindowDriver::eventually([&] {
            if (chat().hasApproval())
                chat().approveForChat();
            if (isStopped && server.requests().size() > requestsBefore)
                chat().stopResponding();
            return !chat().isResponding() && chat().turnsInFlight() == 0;
        })) << model.toStdString();
    }

    // One turn: what is stored of it, the requests, their rows in the ledger, what the banner says, and where
    // there are lines of abilities, those and how the text begins. A model may be sent a picture.
    QString outcome(const QByteArray &input)
    {
        const QString model = QString::fromUtf8(input.split(' ').first());
        const std::size_t requests = server.requests().size();
        const std::size_t rows = ledger().entries.size();
        useModel(model);
        chat().newConversation();
        std::optional<ImportedAttachment> picture;
        if (input.endsWith(" with a picture"))
            picture = {.id = QUuid::createUuid(),
                       .filename = u"fern.jpg"_s,
                       .fileExtension = u"image"_s,
                       .imageData = QByteArray("jpeg")};
        chat().sendMessage(u"Tell me about ferns"_s, picture);
        letTurnEnd(model, requests);
        const auto made = [&] { return server.requests().size() - requests; };
        EXPECT_TRUE(WindowDriver::eventually([&] { return ledger().entries.size() - rows >= made(); }))
            << model.toStdString();
        QStringList outcomes;
        for (const auto &entry : ledger().entries)
            outcomes += entry.outcome.text();
        QStringList told{chat().messages()->messages().back()->statusRaw(), QString::number(made()),
                         outcomes.sliced(static_cast<qsizetype>(rows)).join(u", "_s)};
        if (chat().hasBanner())
            told += {chat().banner().message, chat().banner().quotation};
        const QStringList abilities = lastRow(MessageListModel::ToolLinesRole).toStringList();
        if (!abilities.isEmpty())
            told += {abilities.join(u", "_s), lastText().left(70)};
        return told.join(u" | "_s);
    }
};

TEST_P(EveryServerTest, EndsInItsOwnStatusWordsRequestsAndRows)
{
    outcome("practice-fast"); // what the server is has been asked here
    TestData::expect(GetParam().table, [this](const QByteArray &input) { return outcome(input); });
}

INSTANTIATE_TEST_SUITE_P(Tables, EveryServerTest,
                         testing::Values(Service{replying}, Service{broken},
                                         Service{"end_to_end/strict_service.txt",
                                                 {u"--strict"_s, u"cloud"_s}},
                                         Service{"end_to_end/llama_service.txt", {u"--strict"_s, u"llama"_s}},
                                         Service{"end_to_end/untelling_ollama.txt", untellingOllama()}));

TEST(ServerTablesTest, LeaveNoScenarioOut)
{
    QProcess server;
    server.start(ModelServer::program(), {u"--list"_s});
    server.waitForFinished();
    const std::string tables = TestData::text(replying) + TestData::text(broken);
    const QByteArrayList scenarios = server.readAllStandardOutput().trimmed().split('\n');
    EXPECT_GT(scenarios.size(), 60);
    for (const QByteArray &line : scenarios) {
        QByteArray name = line.first(line.indexOf(' '));
        if (name.endsWith("-N"))
            name.chop(1);
        EXPECT_NE(tables.find('\n' + name.toStdString()), std::string::npos) << name.toStdString();
    }
}

} // namespace

} // namespace morvane
