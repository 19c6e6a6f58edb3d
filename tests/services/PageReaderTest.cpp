#include "services/PageReader.h"
#include "services/PageAddress.h"
#include "services/WebServiceFixture.h"
#include "support/RoutedSession.h"
#include "support/TestData.h"

#include <QSemaphore>

#include <atomic>
#include <zlib.h>

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = WebAccessError::Plain;

namespace {

constexpr qsizetype pageLimit = 5'242'880;
const QByteArray prose = "<p>A long enough paragraph, which a person might well read.</p>";

QByteArray gzip(const QByteArray &plain)
{
    z_stream stream{};
    constexpr int gzipFraming = 16 + MAX_WBITS;
    deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, gzipFraming, 8, Z_DEFAULT_STRATEGY);
    QByteArray packed(static_cast<qsizetype>(deflateBound(&stream, static_cast<uLong>(plain.size()))), '\0');
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(plain.constData()));
    stream.avail_in = static_cast<uInt>(plain.size());
    stream.next_out = reinterpret_cast<Bytef *>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.truncate(static_cast<qsizetype>(stream.total_out));
    deflateEnd(&stream);
    return packed;
}

QByteArray redirectTo(const QByteArray &location)
{
    return ScriptedServer::response("302 Found", "moved", "Location: " + location + "\r\n");
}

// Pages of real servers behind names of the web.
class PageReaderTest : public WebServiceFixture {
protected:
    // `host` answers every request with `response`.
    void serve(const QString &host, const QByteArray &response)
    {
        servers.push_back(std::make_unique<ScriptedServer>(ScriptedServer::answering(response)));
        session->route(host, servers.back()->url());
    }

    WebAccessing::Page read(const QString &url, qsizetype limit = 6000)
    {
        return TestWait::await(web.readPage(url, limit, {}));
    }

    Error errorOfPage(const QString &url) { return errorOf(web.readPage(url, 6000, {})); }

    std::shared_ptr<RoutedSession> session =
        std::make_shared<RoutedSession>(realSession(EgressFeature::webPage));
    std::map<QString, QStringList> names; // every other name is public
    std::atomic<int> lookups = 0;
    WebAccessService web{services,
                         {},
                         [this](const QString &name) {
                             ++lookups;
                             const auto found = names.find(name);
                             return found == names.end() ? QStringList{u"93.184.215.14"_s} : found->second;
                         },
                         session};
    std::vector<std::unique_ptr<ScriptedServer>> servers;
};

TEST_F(PageReaderTest, ReadsTitleAndTextOfAPage)
{
    serve(u"a.example"_s,
          ScriptedServer::response("200 OK", "<head><title>News &amp; more</title></head>" + prose + prose));
    const auto page = read(u"https://a.example/x?y=1"_s, 70);
    EXPECT_EQ(page.title, u"News & more"_s);
    EXPECT_EQ(page.text, u"A long enough paragraph, which a person might well read.\nA long enough"_s);
    const auto request = servers[0]->requests().at(0);
    EXPECT_EQ(request.target(), "/x?y=1");
    EXPECT_TRUE(request.head.contains("Accept: text/html,application/xhtml+xml\r\n"));
    EXPECT_TRUE(
        request.head.contains("User-Agent: Mozilla/5.0 (Macintosh; Intel Mac OS X) MorvaneGPT/1.0\r\n"));
    ASSERT_EQ(ledger.snapshot().entries.size(), 1U);
    EXPECT_EQ(ledger.snapshot().entries[0].feature, EgressFeature::webPage);
    EXPECT_EQ(read(u"https://a.example/"_s, 4).title, u"News"_s);
    EXPECT_TRUE(network.asked.empty());
    serve(u"a.example"_s, ScriptedServer::response("200 OK", "<title> </title>" + prose));
    EXPECT_EQ(read(u"https://A.example/"_s).title, u"a.example"_s);
}

TEST_F(PageReaderTest, SendsNothingToAnAddressThatMayNotBeRead)
{
    names = {{u"inside.example"_s, {u"192.168.1.1"_s}},
             {u"mixed.example"_s, {u"93.184.215.14"_s, u"fd00::1"_s}},
             {u"mapped.example"_s, {u"::ffff:127.0.0.1"_s}},
             {u"scoped.example"_s, {u"fe80::1%eth0"_s}},
             {u"nowhere.example"_s, {}}};
    const auto outcome = [this](const QByteArray &url) {
        return WebAccessError(errorOfPage(QString::fromUtf8(url)).value()).userMessage();
    };
    const char *table = "services/unread_pages.txt";
    EXPECT_EQ(TestData::transcript(table, outcome), TestData::text(table));
    const PageReader onThatNetwork(
        session, HostLookup(work, [](const QString &) { return QStringList{u"93.184.215.14"_s}; }), work, [] {
            return PageAddress::Subnets{{QByteArray::fromHex("5db8d701"), 24}};
        });
    EXPECT_EQ(errorOf(onThatNetwork.read(u"https://next-door.example/"_s, 100, {})),
              WebAccessError::Case(Plain::privateAddress));
    EXPECT_TRUE(session->asked().empty());
    EXPECT_EQ(lookups, 5);
}

TEST_F(PageReaderTest, FollowsRedirectsToPublicHostsOnly)
{
    names = {{u"inside.example"_s, {u"10.1.1.1"_s}}};
    serve(u"b.example"_s, ScriptedServer::response("200 OK", prose));
    const auto outcome = [this](const QByteArray &location) {
        serve(u"a.example"_s, redirectTo(location));
        const auto before = session->asked().size();
        const Error error = errorOfPage(u"https://a.example/"_s);
        return QString::number(session->asked().size() - before) + u": "_s +
               (error ? WebAccessError(*error).userMessage() : u"read"_s);
    };
    const char *table = "services/page_redirects.txt";
    EXPECT_EQ(TestData::transcript(table, outcome), TestData::text(table));
    const auto rows = ledger.snapshot().entries;
    EXPECT_EQ(rows.front().outcome, EgressOutcome{EgressOutcome::Completed{302}});
}

TEST_F(PageReaderTest, SaysWhyAResponseIsNoPage)
{
    const auto ok = [](const QByteArray &body) { return ScriptedServer::response("200 OK", body); };
    const struct {
        const char *name;
        QByteArray response;
        Error error;
    } cases[] = {
        {"missing", ScriptedServer::response("404 Not Found", prose), WebAccessError::FetchFailed{404}},
        {"not modified", "HTTP/1.1 304 Not Modified\r\n\r\n", WebAccessError::FetchFailed{304}},
        {"39 characters", ok(QByteArray(39, 'x')), Plain::unreadablePage},
        {"40 characters", ok(QByteArray(40, 'x')), std::nullopt},
        {"empty", ok(""), Plain::unreadablePage},
        {"Latin 1", ok("caf\xe9 " + prose), std::nullopt},
        {"wall", ok("<p>Please wait, checking your browser before you go on.</p>"),
         WebAccessError::BlockedByBotProtection{u"a.example"_s}},
        {"at the limit", ok(QByteArray(pageLimit, 'x')), std::nullopt},
        {"over the limit", ok(QByteArray(pageLimit + 1, 'x')), Plain::pageTooLarge},
        {"packed", ScriptedServer::response("200 OK", gzip(prose), "Content-Encoding: gzip\r\n"),
         std::nullopt},
        {"unpacks to too much",
         ScriptedServer::response("200 OK", gzip(QByteArray(pageLimit + 1, 'x')),
                                  "Content-Encoding: gzip\r\n"),
         Plain::pageTooLarge},
        {"packed twice, to more than anyone waits for",
         ScriptedServer::response("200 OK", gzip(gzip(QByteArray(80'000'000, 'x'))),
                                  "Content-Encoding: gzip, gzip\r\n"),
         Plain::pageTooLarge},
        {"broken off", "HTTP/1.1 200 OK\r\nContent-Length: 500\r\n\r\n" + prose, Plain::offline},
        {"no HTTP", "hello\r\n", Plain::offline},
    };
    for (const auto &[name, response, error] : cases) {
        servers.clear();
        servers.push_back(
            std::make_unique<ScriptedServer>([&sent = response](ScriptedServer::Connection &connection) {
                connection.readRequest();
                connection.send(sent);
            }));
        session->route(u"a.example"_s, servers.back()->url());
        EXPECT_EQ(errorOfPage(u"https://a.example/"_s), error) << name;
    }
    EXPECT_EQ(errorOfPage(u"https://unreachable.example/"_s), WebAccessError::Case(Plain::offline));
}

TEST_F(PageReaderTest, ANameThatTurnsPrivateBeforeItIsConnectedToIsRefused)
{
    network.fake->answer(
        {.sendError = std::make_exception_ptr(TransportError(TransportError::Code::Blocked, u"refused"_s))});
    WebAccessService overNetwork(services, {}, [](const QString &) { return QStringList{u"8.8.8.8"_s}; });
    EXPECT_EQ(errorOf(overNetwork.readPage(u"https://a.example"_s, 100, {})),
              WebAccessError::Case(Plain::privateAddress));
    ASSERT_EQ(network.asked.size(), 1U);
    EXPECT_EQ(network.asked[0], std::pair(EgressFeature::webPage, SensitiveDataSet()));
}

// Wherever it is when the person stops it.
TEST_F(PageReaderTest, AStopEndsTheReadAtOnce)
{
    QSemaphore resolverHangs;
    const auto hangs = [&resolverHangs](const QString &) {
        resolverHangs.acquire();
        return QStringList();
    };
    WebAccessService slow(services, {}, hangs, session);
    ScriptedServer silent([](ScriptedServer::Connection &connection) {
        connection.readRequest();
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 500\r\n\r\n");
        connection.awaitClose();
    });
    session->route(u"a.example"_s, silent.url());
    for (WebAccessService *service : {&slow, &web}) {
        std::stop_source stop;
        const auto read = begin(service->readPage(u"https://a.example/"_s, 100, stop.get_token()));
        if (service == &web)
            TestWait::until([&] { return !silent.requests().empty(); });
        stop.request_stop();
        EXPECT_EQ(errorOf(*read), WebAccessError::Case(Plain::cancelled));
    }
    resolverHangs.release();
    TestWait::until([&] { return silent.closedByPeer() == 1; });
}

} // namespace

} // namespace morvane
