#include "support/ModelServer.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "support/Await.h"
#include "support/ManualClock.h"
#include "support/TestData.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class ModelServerTest : public testing::Test {
protected:
    HttpResponse post(const ModelServer &server, const char *model)
    {
        return post(server.baseUrl() + u"/chat/completions"_s,
                    R"({"model": ")" + QByteArray(model) + R"("})");
    }
    HttpResponse post(const QString &url, QByteArray body)
    {
        HttpRequest request;
        request.method = "POST";
        request.url = QUrl(url);
        request.body = std::move(body);
        return TestWait::await(m_network.session(EgressFeature::aiModel, {})->send(request, {}));
    }
    QByteArray bodyOf(HttpResponse response)
    {
        return TestWait::await(readBody(std::move(response), 1 << 20, {}));
    }
    QJsonValue choice(HttpResponse response)
    {
        return QJsonDocument::fromJson(bodyOf(std::move(response)))["choices"_L1][0];
    }

private:
    ManualClock m_clock;
    NetworkLedger m_ledger;
    AppNetwork m_network{m_ledger, m_clock};
};

TEST_F(ModelServerTest, AScenarioFileIsPlayedInItsOrderAndThenTheBuiltInOnes)
{
    ModelServer server({u"--scenario"_s, TestData::pathOf("tools/scenario.json")});
    EXPECT_EQ(post(server, "b").status, 418);
    EXPECT_EQ(choice(post(server, "a"))["message"_L1]["tool_calls"_L1][0]["id"_L1].toString(), u"x"_s);
    const QJsonValue second = choice(post(server, "a"));
    EXPECT_EQ(second["message"_L1]["content"_L1].toString(), u"one two"_s);
    EXPECT_EQ(second["finish_reason"_L1].toString(), u"length"_s);
    EXPECT_EQ(post(server, "a").status, 404); // used up, and no built-in scenario has this name
    EXPECT_EQ(bodyOf(post(server, "c")), QByteArray("\xff\0!", 3));
    EXPECT_EQ(post(server, "practice-fast").status, 200);
    EXPECT_EQ(server.requests()[0].json()["model"_L1].toString(), u"b"_s);
}

TEST_F(ModelServerTest, OllamaRefusesWhatAModelCannotDoAndTellsHowAPullGoes)
{
    const ModelServer server(ModelServer::Interface::ollama, {{u"small"_s, {u"completion"_s}}});
    const QString chat = server.rootUrl() + u"/api/chat"_s;
    EXPECT_EQ(post(chat, R"({"model": "small", "stream": false})").status, 200);
    EXPECT_EQ(post(chat, R"({"model": "small", "think": "low"})").status, 400);
    EXPECT_EQ(bodyOf(post(chat, R"({"model": "small", "tools": [{}]})")),
              R"({"error":"\"small\" does not support tools"})");

    const QString pull = server.rootUrl() + u"/api/pull"_s;
    const QByteArrayList lines = bodyOf(post(pull, R"({"model": "new"})")).split('\n');
    ASSERT_EQ(lines.size(), 9); // eight and the end of the last
    EXPECT_EQ(lines.first(), R"({"status":"pulling manifest"})");
    const QJsonDocument half = QJsonDocument::fromJson(lines[3]);
    EXPECT_EQ(half["completed"_L1].toInt() * 2, half["total"_L1].toInt());
    EXPECT_EQ(lines[7], R"({"status":"success"})");
    EXPECT_EQ(post(chat, R"({"model": "new"})").status, 200);
    EXPECT_TRUE(bodyOf(post(pull, R"({"model": "pull-missing"})"))
                    .contains(R"({"error":"pull model manifest: file does not exist"})"));
    EXPECT_EQ(bodyOf(post(pull, R"({"model": "quiet", "stream": false})")), R"({"status":"success"})");
    EXPECT_EQ(post(chat, R"({"model": "quiet"})").status, 200);
    EXPECT_EQ(post(pull, R"({"model": "pull-missing", "stream": false})").status, 500);

    const ModelServer other;
    EXPECT_EQ(post(other.rootUrl() + u"/api/chat"_s, R"({"model": "practice-fast"})").status, 404);
}

TEST_F(ModelServerTest, EndsWellWhenToldToAndSaysNoToABadFile)
{
    QProcess process;
    process.start(ModelServer::program(), {});
    TestWait::until([&] { return process.canReadLine(); });
    process.terminate();
    TestWait::until([&] { return process.state() == QProcess::NotRunning; });
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0);

    process.start(ModelServer::program(), {u"--scenario"_s, u"/nonexistent"_s});
    TestWait::until([&] { return process.state() == QProcess::NotRunning; });
    EXPECT_EQ(process.exitCode(), 1);
}

} // namespace

} // namespace morvane
