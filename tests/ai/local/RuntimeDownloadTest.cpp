#include "ai/local/RuntimeDownload.h"

#include "TestArchive.h"
#include "ai/local/LocalSetupError.h"
#include "ai/local/SetupLog.h"
#include "async/Clock.h"
#include "async/Work.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "support/Await.h"
#include "support/FileSpy.h"
#include "support/ManualClock.h"
#include "support/ScriptedServer.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Request = ScriptedServer::Request;

// Against a real server on loopback; the pauses between attempts are the clock's.
class RuntimeDownloadTest : public testing::Test {
protected:
    void serve(ScriptedServer::Script script)
    {
        server = std::make_unique<ScriptedServer>(std::move(script));
        values.version = u"1"_s;
        values.folder = home.filePath(u"data"_s);
        values.releaseOrigin = server->url(QString());
        values.archive =
            LocalRuntimeValues::Archive{u"a.tar.zst"_s, TestArchive::digestOf(bytes), bytes.size()};
    }

    // Bytes from `from` on, of which only `count` are sent before the connection breaks.
    QByteArray part(qsizetype from, qsizetype count) const
    {
        const QByteArray size = QByteArray::number(bytes.size());
        QByteArray head = from == 0 ? "HTTP/1.1 200 OK\r\n"
                                    : "HTTP/1.1 206 Partial Content\r\nContent-Range: bytes " +
                                          QByteArray::number(from) + '-' +
                                          QByteArray::number(bytes.size() - 1) + '/' + size + "\r\n";
        head += "Content-Length: " + QByteArray::number(bytes.size() - from) + "\r\n\r\n";
        return head + bytes.mid(from, count);
    }

    static qsizetype startOf(const Request &request)
    {
        const qsizetype at = request.head.indexOf("Range: bytes=");
        return at < 0 ? 0 : request.head.mid(at + 13, request.head.indexOf('-', at) - at - 13).toLongLong();
    }

    // What the person is told; empty when the archive is there and proven.
    QString run(std::stop_token stop = {})
    {
        const auto outcome = std::make_shared<TestWait::Outcome<QString>>();
        const RuntimeDownload::Parts parts{&network, &work, &clock,
                                           std::make_shared<SetupLog>(values.setupLog(), clock), values};
        RuntimeDownload::OnProgress onProgress = [this](qint64 done, std::optional<qint64>) {
            dones.push_back(done);
            if (onDone)
                onDone(done);
        };
        TestWait::collect<QString>(RuntimeDownload::run(parts, std::move(onProgress), std::move(stop)),
                                   outcome);
        QTimer tick; // the pauses pass as the events do
        QObject::connect(&tick, &QTimer::timeout, &tick, [this] { clock.advance(100ms); });
        tick.start(1);
        TestWait::until([&] { return outcome->done; });
        try {
            if (outcome->error)
                std::rethrow_exception(outcome->error);
        } catch (const LocalSetupError &error) {
            return error.userMessage();
        } catch (const std::exception &error) {
            return QString::fromUtf8(error.what());
        }
        EXPECT_EQ(TestArchive::read(*outcome->value), bytes);
        return {};
    }

    qint64 fetched() const { return QFileInfo(RuntimeDownload::path(values)).size(); }

    const QByteArray bytes = QByteArray(1'000'000, 'a') + QByteArray(1'000'000, 'b');
    QTemporaryDir home;
    ManualClock clock;
    Work work{clock};
    NetworkLedger ledger;
    AppNetwork network{ledger, clock};
    std::unique_ptr<ScriptedServer> server;
    LocalRuntimeValues values;
    std::vector<qint64> dones;
    std::function<void(qint64)> onDone;
};

TEST_F(RuntimeDownloadTest, ABrokenDownloadGoesOnWhereItStopped)
{
    std::atomic<int> asked = 0;
    serve([&](ScriptedServer::Connection &connection) {
        if (const auto request = connection.readRequest()) {
            const int round = ++asked;
            connection.send(part(startOf(*request), round < 8 ? 80'000 : bytes.size()));
        }
    });
    for (const bool isSizeKnown : {true, false}) {
        asked = 0;
        if (!isSizeKnown)
            values.archive->bytes.reset();
        EXPECT_EQ(run(), QString());
        EXPECT_EQ(asked, 8);
        EXPECT_TRUE(std::ranges::is_sorted(dones));
        EXPECT_EQ(dones.back(), bytes.size());
        EXPECT_EQ(startOf(server->requests().back()), 560'000);
        QFile::remove(RuntimeDownload::path(values));
        dones.clear();
    }
}

TEST_F(RuntimeDownloadTest, ADownloadThatWasStoppedIsThereForTheNextOneAndAWholeOneIsNotFetchedAgain)
{
    serve([&](ScriptedServer::Connection &connection) {
        while (const auto request = connection.readRequest())
            connection.send(part(startOf(*request), bytes.size()));
    });
    std::stop_source stop;
    onDone = [&](qint64 done) {
        if (done > 0)
            stop.request_stop();
    };
    EXPECT_EQ(run(stop.get_token()), u"cancelled"_s);
    onDone = {};
    EXPECT_GT(fetched(), 0);
    EXPECT_EQ(run(), QString());
    EXPECT_EQ(startOf(server->requests().back()) > 0, server->requests().size() > 1);
    const auto asked = server->requests().size();
    EXPECT_EQ(run(), QString());
    EXPECT_EQ(server->requests().size(), asked);
}

TEST_F(RuntimeDownloadTest, AnotherDigestDeletesWhatCame)
{
    const std::vector<QByteArray> others{
        QByteArray(bytes).replace(0, 1, "c"), // as long
        bytes + "more",
    };
    for (const QByteArray &other : others) {
        serve(ScriptedServer::answering(ScriptedServer::response("200 OK", other)));
        EXPECT_EQ(run(),
                  u"The AI runtime MorvaneGPT downloaded was not the version it expected, so it was deleted. "
                  "Try again in a little while."_s);
        EXPECT_FALSE(QFileInfo::exists(RuntimeDownload::path(values)));
        EXPECT_TRUE(TestArchive::read(values.setupLog()).contains("runtime digest mismatch for 1; deleted"));
    }
}

TEST_F(RuntimeDownloadTest, WhatIsNoArchiveIsSaidAndNothingIsKeptOfIt)
{
    struct Row {
        QByteArray response;
        const char *words;
    };
    const std::vector<Row> rows{
        {ScriptedServer::response("404 Not Found", "nothing"), "answered with HTTP 404"},
        {ScriptedServer::response("503 Service Unavailable", {}), "doesn't answer as it should"},
        {ScriptedServer::response("302 Found", {}, "Location: http://example.invalid/a\r\n"),
         "isn't encrypted"},
        {ScriptedServer::response("302 Found", {}, "Location: ftp://127.0.0.1/a\r\n"),
         "ftp is not a web address"},
        {ScriptedServer::response("206 Partial Content", "abc", "Content-Range: bytes 5-7/8\r\n"),
         "another part"},
    };
    for (const Row &row : rows) {
        serve(ScriptedServer::answering(row.response));
        EXPECT_TRUE(run().contains(QLatin1StringView(row.words))) << row.words;
        EXPECT_EQ(fetched(), 0) << row.words;
    }
}

TEST_F(RuntimeDownloadTest, AFullDiskIsToldApartAndWhatHadRoomStays)
{
    serve([&](ScriptedServer::Connection &connection) {
        while (const auto request = connection.readRequest())
            connection.send(part(startOf(*request), bytes.size()));
    });
    {
        FileSpy spy(home.path());
        spy.refuse(u"write data/downloads"_s, ENOSPC);
        EXPECT_TRUE(run().startsWith(u"The disk is full"_s));
        spy.refuse(u"write data/downloads"_s, EIO);
        EXPECT_FALSE(run().startsWith(u"The disk is full"_s));
    }
    EXPECT_EQ(run(), QString());
}

} // namespace morvane
