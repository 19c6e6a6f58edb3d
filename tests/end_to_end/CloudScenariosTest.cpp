// Every scenario of the private cloud's server, held to the socket.

#include "end_to_end/CloudFixture.h"

#include "attestation/ProofLedger.h"
#include "network/NetworkLedger.h"
#include "support/Await.h"
#include "support/LogCapture.h"
#include "support/TestData.h"

#include <QProcess>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr const char *turns = "end_to_end/private_cloud.txt";
constexpr const char *lists = "end_to_end/private_cloud_lists.txt";

// Of the person, and of the replies.
const QString said = u"Where do the herons sleep"_s;
const QStringList replied{u"practice cloud"_s, u"opened what you wrote"_s, u"PRIVATE THOUGHT"_s,
                          u"MORVANE_TOOL_CALLS"_s};

const QString pausing =
    u"ai-provider: Venice attestation rate limited; asking once more after a short pause"_s;

class CloudScenariosTest : public CloudFixture {
protected:
    using CloudFixture::CloudFixture;

    // What would wait is let go on, and what waits for time gets it.
    void letTurnEnd(const QString &model)
    {
        if (model.endsWith(u"-held"_s))
            cloud.goOn(); // before it is waited for
        TestWait::until([&] {
            if (log.lines().count(pausing) > m_pauses) {
                ++m_pauses;
                time.advance(2s);
            }
            return !chat().isResponding() && chat().turnsInFlight() == 0;
        });
        TestWait::settle(); // the server's log comes by a pipe
    }

    // A question on a connection that had been kept, and then breaks, the network layer asks once more by
    // itself.
    [[nodiscard]] QString kinds(const QString &model)
    {
        QString all = requestsAfter(m_before);
        return model.endsWith(u"-dead"_s) ? all.replace(u"PP"_s, u"P"_s) : all;
    }

    void ask(const QString &model)
    {
        m_before = cloud.requests().size();
        useCloudModel(model);
        chat().sendMessage(said, std::nullopt);
        letTurnEnd(model);
    }

    [[nodiscard]] QString networkRows(std::size_t before, qsizetype requests) const
    {
        const auto snapshot = [this] { return state->assistant().networkLedger->snapshot().entries; };
        QStringList rows;
        TestWait::until([&] {
            rows.clear();
            const auto entries = snapshot();
            for (std::size_t i = before; i < entries.size(); ++i)
                rows += entries[i].outcome.text();
            return rows.size() >= requests && !rows.contains(u"In flight"_s);
        });
        return rows.join(u", "_s);
    }

    [[nodiscard]] QString proofRows(std::size_t before) const
    {
        QStringList rows;
        const auto entries = state->assistant().proofs->snapshot().entries;
        for (std::size_t i = before; i < entries.size(); ++i)
            rows += entries[i].place.code() + (entries[i].attestation ? u" with proof"_s : QString());
        return rows.isEmpty() ? u"none"_s : rows.join(u", "_s);
    }

    // What the person reads: the reply, and behind it the banner.
    [[nodiscard]] QString shown() const
    {
        QString text = lastText();
        if (text.size() > 200)
            text = u"%1 … %2"_s.arg(text.first(20), text.last(20));
        if (chat().hasBanner())
            text += u"⟨%1⟩"_s.arg(chat().banner().message + chat().banner().quotation);
        return text;
    }

    // One turn and the next: the stored status, the requests, the rows in both ledgers, the requests of the
    // turn behind it, and what is shown of the first.
    QString outcome(const QString &model)
    {
        time.advance(125s); // the cloud takes so many turns an hour
        const std::size_t proofs = state->assistant().proofs->snapshot().entries.size();
        const std::size_t rows = state->assistant().networkLedger->snapshot().entries.size();
        chat().newConversation();
        ask(model);
        const QString requests = kinds(model);
        QStringList told{lastStatus(), requests, proofRows(proofs), networkRows(rows, requests.size()),
                         {},           shown()};
        ask(model);
        told[4] = u"then "_s + kinds(model);
        return told.join(u" | "_s);
    }

    void expectNothingInPlain()
    {
        const QByteArray wire = cloud.wire();
        EXPECT_TRUE(wire.contains("X-Venice-TEE-Client-Pub-Key")) << "the record holds something";
        for (const QString &words : QStringList{said, u"herons"_s} + replied)
            expectAbsent(words, wire);
        EXPECT_TRUE(server.chats().empty()) << "nobody stepped in for the private cloud";
        for (const auto &request : server.requests())
            expectAbsent(u"herons"_s, request.target + request.body);
    }

private:
    LogCapture log;
    std::size_t m_before = 0;
    qsizetype m_pauses = 0;
};

TEST(CloudTablesTest, LeaveNoScenarioOut)
{
    QProcess program;
    program.start(PrivateCloudServer::program(), {u"--help"_s});
    ASSERT_TRUE(program.waitForFinished());
    const QByteArray help = program.readAllStandardOutput();
    const qsizetype models = help.indexOf("\nModels");
    const qsizetype ofLists = help.indexOf("\nLists:");
    ASSERT_TRUE(models > 0 && ofLists > models);
    int found = 0;
    for (const auto &[table, part] :
         {std::pair{turns, help.sliced(models, ofLists - models)}, {lists, help.sliced(ofLists)}}) {
        const std::string rows = TestData::text(table);
        for (const QByteArray &line : part.split('\n')) {
            if (!line.startsWith("  "))
                continue;
            const QByteArray name = line.trimmed().split(' ').first();
            EXPECT_NE(rows.find('\n' + name.toStdString() + '\n'), std::string::npos) << name.toStdString();
            ++found;
        }
    }
    EXPECT_GT(found, 30);
}

TEST_F(CloudScenariosTest, EachEndsInItsOwnWordsRequestsAndRowsAndSendsNothingInPlain)
{
    mainWindow.reset();               // what it would show is asked of what it shows it from
    outcome(u"e2ee-glm-5-3-flash"_s); // the list is fetched here
    TestData::expect(turns, [this](const QByteArray &model) { return outcome(model); });
    expectNothingInPlain();
}

// Each list with an application of its own.
class CloudListsTest : public testing::Test {
protected:
    // A turn's stored status, its requests but those for the list, and which list its row names.
    QString turn(AppState &state, PrivateCloudServer &cloud)
    {
        const std::size_t before = cloud.requests().size();
        ChatViewModel &chat = *state.presentation().chat;
        state.assistant().router->tryPrivateCloudAgain();
        chat.newConversation();
        chat.sendMessage(said, std::nullopt);
        std::size_t waited = cloud.lists().size();
        TestWait::until([&] {
            if (cloud.lists().size() > waited && !cloud.lists().back().isOver && m_drips) {
                time.advance(21s);
                ++waited;
            }
            return !chat.isResponding() && chat.turnsInFlight() == 0;
        });
        TestWait::settle();
        QString asked;
        for (std::size_t i = before; i < cloud.requests().size(); ++i)
            asked += cloud.requests()[i].target.startsWith("/v1/attestation") ? u"P"_s
                     : cloud.requests()[i].method == "POST"                   ? u"C"_s
                                                                              : QString();
        const auto row = state.assistant().proofs->snapshot().entries.back();
        return u"%1 %2 by %3"_s.arg(chat.messages()->messages().back()->statusRaw(), asked,
                                    row.acceptedServersList->section(u',', 0, 0));
    }

    // By the list as it comes first, and by what comes seven hours later.
    QString outcome(const QString &list)
    {
        m_drips = list == u"drip"_s;
        const QTemporaryDir profile;
        InMemoryKeychainService keychain;
        PrivateCloudServer cloud({u"--list"_s, list});
        Work work(time);
        CommandLine commandLine;
        commandLine.profile = profile.path();
        commandLine.devRelay = DevRelay::Origin{DevRelay::Loopback::ipv4, cloud.port()};
        AppState state(commandLine, Host::test, time, Secrets{keychain, keychain}, work);
        QStringList told;
        for (const auto &model : {u"e2ee-glm-5-3-flash"_s, u"e2ee-practice"_s}) {
            state.storage().settings->setHostedRelayModel(model);
            told += turn(state, cloud);
        }
        time.advance(7h);
        told += turn(state, cloud);
        for (const QString &words : QStringList{said, u"herons"_s} + replied)
            CloudFixture::expectAbsent(words, cloud.wire());
        state.willTerminate();
        TestWait::settle();
        return told.join(u" | "_s);
    }

    ManualClock time;
    bool m_drips = false;
};

TEST_F(CloudListsTest, EachDecidesWhoIsSentTo)
{
    TestData::expect(lists, [this](const QByteArray &list) { return outcome(list); });
}

} // namespace

} // namespace morvane
