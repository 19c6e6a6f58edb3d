#include "support/ModelServer.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "support/Await.h"
#include "support/ManualClock.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryFile>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

constexpr const char *scenario = R"({"responses": [
    {"model": "a", "times": 1, "toolCalls": [{"id": "x", "name": "f", "arguments": "{}"}]},
    {"model": "a", "times": 1, "text": ["one ", "two"], "finishReason": "length"},
    {"model": "b", "status": 418, "json": {"error": "teapot"}},
    {"model": "c", "raw": ["HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\n", {"base64": "/wA="}, {"pauseMs": 1}, "!"]}
]})";

class ModelServerTest : public testing::Test {
protected:
    ModelServerTest()
    {
        EXPECT_TRUE(m_file.open());
        m_file.write(scenario);
        m_file.close();
    }
    HttpResponse post(const ModelServer &server, const char *model)
    {
        HttpRequest request;
        request.method = "POST";
        request.url = QUrl(server.baseUrl() + u"/chat/completions"_s);
        request.body = R"({"model": ")" + QByteArray(model) + R"("})";
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
    QStringList scenarioOption() const { return {u"--scenario"_s, m_file.fileName()}; }

private:
    QTemporaryFile m_file;
    ManualClock m_clock;
    NetworkLedger m_ledger;
    AppNetwork m_network{m_ledger, m_clock};
};

TEST_F(ModelServerTest, AScenarioFileIsPlayedInItsOrderAndThenTheBuiltInOnes)
{
    ModelServer server(scenarioOption());
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

TEST_F(ModelServerTest, EndsWellWhenToldToAndSaysNoToABadFile)
{
    QProcess process;
    process.start(QStringLiteral(MORVANE_MODEL_SERVER), {});
    TestWait::until([&] { return process.canReadLine(); });
    process.terminate();
    TestWait::until([&] { return process.state() == QProcess::NotRunning; });
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0);

    process.start(QStringLiteral(MORVANE_MODEL_SERVER), {u"--scenario"_s, u"/nonexistent"_s});
    TestWait::until([&] { return process.state() == QProcess::NotRunning; });
    EXPECT_EQ(process.exitCode(), 1);
}

} // namespace
