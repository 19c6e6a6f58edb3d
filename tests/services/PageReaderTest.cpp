#include "services/PageReader.h"
#include "services/PageAddress.h"
#include "services/PageText.h"
#include "services/WebServiceFixture.h"
#include "support/RoutedSession.h"
#include "support/TestData.h"

#include <QElapsedTimer>
#include <QSemaphore>

#include <atomic>
#include <zlib.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Plain = WebAccessError::Plain;

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
    TestData::expect("services/unread_pages.txt", outcome);
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
    TestData::expect("services/page_redirects.txt", outcome);
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
        const auto read = TestWait::begin(service->readPage(u"https://a.example/"_s, 100, stop.get_token()));
        if (service == &web)
            TestWait::until([&] { return !silent.requests().empty(); });
        stop.request_stop();
        EXPECT_EQ(errorOf(read), WebAccessError::Case(Plain::cancelled));
    }
    resolverHangs.release();
    TestWait::until([&] { return silent.closedByPeer() == 1; });
}

QString page(const QString &body)
{
    return u"<!DOCTYPE html><html><head><title>T</title></head><body>%1</body></html>"_s.arg(body);
}

TEST(PageTextTest, ReadsWhatAPersonWouldRead)
{
    TestData::expect("services/page_texts.txt", PageText::text);
    TestData::expect("services/page_titles.txt", PageText::title);
}

// The scanners give what the patterns give that they stand for.
TEST(PageTextTest, GivesWhatThePatternsGiveOnAnyMarkup)
{
    const auto outcome = [](const QByteArray &line) {
        const QString html = QString::fromUtf8(line);
        return PageText::title(html) + u" | "_s + PageText::text(html);
    };
    TestData::expect("services/markup_mixes.txt", outcome);
}

TEST(PageTextTest, AMainPartCountsOnlyWhenItIsLong)
{
    const auto withMain = [](const char *name, int characters) {
        const QLatin1StringView tag(name);
        return page(u"outside<%1 id=a>%2</%1>after"_s.arg(tag, QString(characters, u'x')));
    };
    for (const char *name : {"main", "article"}) {
        EXPECT_EQ(PageText::text(withMain(name, 2001)), QString(2001, u'x'));
        EXPECT_TRUE(PageText::text(withMain(name, 2000)).startsWith(u"outside"_s));
    }
    const QString accented = u"e\u0301"_s; // one character each
    EXPECT_TRUE(PageText::text(page(u"outside<main>%1</main>"_s.arg(accented.repeated(2000))))
                    .startsWith(u"outside"_s));
    EXPECT_EQ(PageText::text(page(u"<main>short</main><article>%1</article>"_s.arg(QString(2001, u'y')))),
              QString(2001, u'y'));
}

TEST(PageTextTest, DecodesUtf8AndElseLatin1)
{
    EXPECT_EQ(PageText::decoded("caf\xc3\xa9"), u"café"_s);
    EXPECT_EQ(PageText::decoded("caf\xe9 \xc3\xa9"), u"café Ã©"_s);
    EXPECT_EQ(PageText::decoded({}), u""_s);
}

TEST(PageTextTest, KnowsTheWallsThatSitesShowToPrograms)
{
    EXPECT_TRUE(PageText::isBotWall(u"Just a moment..."_s, u"Checking your BROWSER before access"_s));
    EXPECT_FALSE(PageText::isBotWall(u"Just a moment..."_s, u"A story about waiting."_s));
    EXPECT_TRUE(PageText::isBotWall(u"Attention Required! | Shield"_s, u""_s));
    EXPECT_TRUE(PageText::isBotWall(u"T"_s, QString(593, u'x') + u"captcha"_s));
    EXPECT_FALSE(PageText::isBotWall(u"T"_s, QString(594, u'x') + u"captcha"_s));
    EXPECT_TRUE(PageText::isBotWall(u"Press &"_s, u"hold to go on"_s)); // a blank stands between the two
}

// Markup on which a matcher that goes back takes hours. The time is only a net for another order of growth.
TEST(PageTextTest, HostilePagesTakeLinearTime)
{
    constexpr qsizetype size = 1 << 20;
    for (const QString &piece : {u"<script"_s, u"<script>"_s, u"<title>"_s, u"<title"_s,
                                 u"<title>\n</title>"_s, u"<!--"_s, u"<"_s, u"<br "_s, u"<main>"_s, u"&"_s,
                                 u"&amp;"_s, u" "_s, u"</"_s, u"<a>"_s, u"e\u0301"_s, u"\u0301"_s, u"\n"_s}) {
        const QString html = piece.repeated(size / piece.size());
        QElapsedTimer timer;
        timer.start();
        static_cast<void>(PageText::title(html));
        static_cast<void>(PageText::text(html));
        EXPECT_LT(timer.elapsed(), 10'000) << piece.toStdString();
    }
}

QString judged(const QString &text)
{
    try {
        const QString host = PageAddress::host(PageAddress::parsed(text));
        return (PageAddress::isPrivate(host, {}) ? u"private "_s : u"public "_s) + host;
    } catch (const WebAccessError &error) {
        return error.userMessage();
    }
}

TEST(PageAddressTest, TakesHttpsOnlyAndKnowsPrivateHostsByTheirText)
{
    TestData::expect("services/page_addresses.txt", [](const QByteArray &line) { return judged(line); });
    EXPECT_EQ(judged(u"https://example.org/"_s + QString(1980, u'x')), u"public example.org"_s);
    EXPECT_EQ(judged(u"https://example.org/"_s + QString(1981, u'x')),
              u"That doesn't look like a web address."_s);

    EXPECT_TRUE(PageAddress::isPrivateLiteral(u"010.0.0.1"_s, {})); // ten, by its text
    EXPECT_TRUE(PageAddress::isPrivateLiteral(u"fe80::1%eth0"_s, {}));
    EXPECT_FALSE(PageAddress::isPrivateLiteral(u"10.0.0"_s, {}));
    EXPECT_FALSE(PageAddress::isPrivateLiteral(u"10.0.0.256"_s, {}));
}

} // namespace

} // namespace morvane
