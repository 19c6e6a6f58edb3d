#include "end_to_end/AppFixture.h"

#include "models/ChatMessage.h"
#include "network/NetworkLedger.h"
#include "support/TestData.h"
#include "view_models/chat/ChatViewModel.h"

#include <QProcess>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class BadServerTest : public AppFixture {
protected:
    ChatViewModel &chat() { return *state->presentation().chat; }
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

    // One turn: what is stored of it, the requests, their rows in the ledger, and what the banner says.
    QString outcome(const QString &model)
    {
        const std::size_t requests = server.requests().size();
        const std::size_t rows = ledger().entries.size();
        useModel(model);
        chat().newConversation();
        chat().sendMessage(u"Hello"_s, std::nullopt);
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
        return told.join(u" | "_s);
    }
};

constexpr const char *replying = "end_to_end/replying_servers.txt";
constexpr const char *broken = "end_to_end/broken_servers.txt";

class EveryServerTest : public BadServerTest, public testing::WithParamInterface<const char *> {};

TEST_P(EveryServerTest, EndsInItsOwnStatusWordsRequestsAndRows)
{
    outcome(u"practice-fast"_s); // what the server is has been asked here
    EXPECT_EQ(TestData::transcript(GetParam(), [this](const QByteArray &model) { return outcome(model); }),
              TestData::text(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Tables, EveryServerTest, testing::Values(replying, broken));

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
