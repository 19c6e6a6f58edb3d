#include "support/RuntimeHost.h"

#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "support/Await.h"
#include "support/ManualClock.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class RuntimeHostTest : public testing::Test {
protected:
    struct Answer {
        int status = 0;
        QByteArray body;
        bool isWhole = false;
    };
    static QCoro::Task<Answer> gather(std::shared_ptr<HttpSession> session, HttpRequest request)
    {
        HttpResponse response = co_await session->send(std::move(request), {});
        Answer answer{response.status, {}, false};
        try {
            while (const auto piece = co_await response.body.next())
                answer.body += *piece;
            answer.isWhole = true;
        } catch (const TransportError &) {
        }
        co_return answer;
    }
    Answer ask(QByteArray method, const QString &url, QByteArray body = {}, qint64 from = 0)
    {
        HttpRequest request;
        request.method = std::move(method);
        request.url = QUrl(url);
        request.body = std::move(body);
        if (from > 0)
            request.headers.push_back({"Range", "bytes=" + QByteArray::number(from) + '-'});
        return TestWait::await(gather(m_network.session(EgressFeature::aiModel, {}), std::move(request)));
    }
    QByteArray digest(const QByteArray &bytes)
    {
        return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
    }

private:
    ManualClock m_clock;
    NetworkLedger m_ledger;
    AppNetwork m_network{m_ledger, m_clock};
};

TEST_F(RuntimeHostTest, AnArchiveThatBreaksOffGoesOnFromThere)
{
    const RuntimeHost host;
    host.deliver(u"cut-once"_s);
    const Answer half = ask("GET", host.archiveUrl());
    EXPECT_FALSE(half.isWhole);
    EXPECT_GT(half.body.size(), 1'000'000);
    const Answer rest = ask("GET", host.archiveUrl(), {}, half.body.size());
    EXPECT_EQ(rest.status, 206);
    EXPECT_EQ(digest(half.body + rest.body), host.description()["sha256"_L1].toString().toLatin1());
    EXPECT_EQ(half.body.size() + rest.body.size(), host.description()["bytes"_L1].toInteger());

    host.deliver(u"wrong-digest"_s);
    EXPECT_NE(digest(ask("GET", host.archiveUrl()).body),
              host.description()["sha256"_L1].toString().toLatin1());
    EXPECT_EQ(ask("GET", host.archiveUrl(), {}, 1'000'000'000).status, 416);
    EXPECT_THROW(host.deliver(u"none"_s), std::runtime_error);
    EXPECT_THROW(RuntimeHost(u"none"_s), std::runtime_error);
}

// The runtime, started by hand, tells what it was born with and takes up a pull that was broken off.
class PracticeRuntimeTest : public RuntimeHostTest {
protected:
    PracticeRuntimeTest()
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"HOME"_s, home.path());
        environment.insert(u"MORVANE_RUNTIME_FOLDER"_s, host.folder());
        environment.insert(u"OLLAMA_HOST"_s, u"127.0.0.1:%1"_s.arg(host.serverPort()));
        runtime.setProcessEnvironment(environment);
    }
    ~PracticeRuntimeTest() override
    {
        runtime.kill();
        runtime.waitForFinished();
    }
    void start()
    {
        runtime.readAll();
        runtime.setProcessChannelMode(QProcess::MergedChannels);
        runtime.start(RuntimeHost::runtimeProgram(), {u"serve"_s});
        TestWait::until([&] { return runtime.canReadLine(); }); // it says where it listens
    }
    Answer call(QByteArray method, const char *path, QByteArray body = {})
    {
        return ask(std::move(method),
                   u"http://127.0.0.1:%1"_s.arg(host.serverPort()) + QLatin1StringView(path),
                   std::move(body));
    }

    RuntimeHost host;
    QTemporaryDir home;
    QProcess runtime;
};

TEST_F(PracticeRuntimeTest, APullGoesOnAfterTheRuntimeDiedAndTheModelAnswers)
{
    const QByteArray model = R"({"model": "llama3.2:1b"})";
    host.play(u"pull-dies"_s);
    start();
    EXPECT_FALSE(call("POST", "/api/pull", model).isWhole);
    TestWait::until([&] { return runtime.state() == QProcess::NotRunning; });
    host.play(u"good"_s);
    start();
    EXPECT_EQ(call("GET", "/api/tags").body, R"({"models":[]})");
    EXPECT_TRUE(call("POST", "/api/pull", model).body.endsWith("{\"status\":\"success\"}\n"));
    const auto layers = host.journal(u"layer"_s);
    EXPECT_EQ(layers.at(1)["from"_L1].toInt() * 2, layers.at(1)["size"_L1].toInt());
    const auto listed = QJsonDocument::fromJson(call("GET", "/api/tags").body)["models"_L1][0];
    EXPECT_EQ(listed["size"_L1].toInteger(), 8'390'520);

    const QByteArray chat =
        R"({"model": "llama3.2:1b", "messages": [{"role": "user", "content": "the heron"}]})";
    EXPECT_TRUE(call("POST", "/api/chat", chat).body.contains("heron"));
    EXPECT_TRUE(call("POST", "/v1/chat/completions", chat).body.contains("heron"));
    EXPECT_TRUE(call("GET", "/api/ps").body.contains("llama3.2:1b"));
    host.play(u"changed-digest"_s);
    EXPECT_NE(QJsonDocument::fromJson(call("GET", "/api/tags").body)["models"_L1][0]["digest"_L1],
              listed["digest"_L1]);
    EXPECT_EQ(call("DELETE", "/api/delete", model).status, 200);
    EXPECT_EQ(call("DELETE", "/api/delete", model).status, 404);

    ASSERT_TRUE(QFile::remove(home.filePath(u".ollama/id_ed25519"_s)));
    EXPECT_TRUE(call("POST", "/api/pull", model).body.contains("open id_ed25519: no such file"));
    const auto birth = host.journal(u"serve"_s).at(0);
    EXPECT_FALSE(birth["isWhole"_L1].toBool()) << "outside an installation";
}

} // namespace

} // namespace morvane
