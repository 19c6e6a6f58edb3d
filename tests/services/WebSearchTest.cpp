#include "services/WebServiceFixture.h"
#include "support/LogCapture.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Plain = WebAccessError::Plain;
using Results = std::vector<WebAccessing::SearchResult>;

namespace {

const QByteArray noResults = R"({"web":{"results":[]},"results":[]})";
const QByteArray entries = R"([
    {"title":"<strong>A</strong> title","url":"https://a.example","description":"d <b>1</b>","snippet":"s <i>1</i>",
     "thumbnail":{"src":"https://img.example/a.png"}},
    {"title":"No address"}, {"url":"https://untitled.example"}, {"title":1,"url":"https://number.example"}, "text", null,
    {"title":"B","url":"https://b.example","thumbnail":{"src":"http://img.example/b.png"}}])";

class WebSearchTest : public WebServiceFixture {
protected:
    Results search(WebAccessService &service, const QString &query = u"news"_s)
    {
        return TestWait::await(service.search(query, {}));
    }

    Error errorOfSearch(const QString &query = u"news"_s) { return errorOf(web.search(query, {})); }

    void giveKey(const QString &key = u"my key"_s)
    {
        keychain.save(key, WebAccessService::searchKeyAccount());
    }

    const WebAccessService::Endpoints endpoints{QUrl(u"https://brave.test"_s),
                                                QUrl(u"https://search.test/"_s)};
    std::shared_ptr<FakeHttpSession> fake = network.fake;
    WebAccessService web{services, endpoints};
};

TEST_F(WebSearchTest, EachEndpointIsAskedWithItsOwnCredential)
{
    ScriptedServer server(ScriptedServer::answering(ScriptedServer::response(
        "200 OK", R"({"web":{"results":)" + entries + R"(},"results":)" + entries + "}")));
    WebAccessService real(services, {server.url(), server.url()}, WebAccessService::systemResolver(),
                          realSession(EgressFeature::webSearch));
    const auto expect = [&](const QByteArray &target, const QByteArrayList &headers) {
        const auto request = server.requests().back();
        EXPECT_EQ(request.target(), target);
        for (const QByteArray &header : headers)
            EXPECT_TRUE(request.head.contains(header + "\r\n")) << header.constData();
        EXPECT_EQ(request.head.contains("my key"), real.usesOwnKey());
    };
    const QString words = u"  tea & milk+süß?\n"_s;
    const QByteArray query = "q=tea%20%26%20milk%2Bs%C3%BC%C3%9F%3F";
    EXPECT_EQ(search(real, words).at(0).snippet, u"s 1"_s);
    expect("/v1/search?" + query,
           {"Accept: application/json", "User-Agent: MorvaneGPT-mac/1.0", "X-QF-Client: 1",
            "Authorization: Bearer qf_" + identity.credential(ServiceIdentity::Service::Search).toLatin1()});
    giveKey();
    const Results expected{
        {u"A title"_s, u"https://a.example"_s, u"d 1"_s, u"https://img.example/a.png"_s},
        {u"B"_s, u"https://b.example"_s, u""_s, std::nullopt},
    };
    EXPECT_EQ(search(real, words), expected);
    expect("/res/v1/web/search?" + query + "&count=5",
           {"Accept: application/json", "Accept-Encoding: gzip", "X-Subscription-Token: my key"});
}

TEST_F(WebSearchTest, CountsTheProductsSearchesByDayAndMonth)
{
    int told = 0;
    web.setOnProxiedSearch([&] { ++told; });
    const auto counted = [&] {
        fake->answer(200, noResults);
        search(web);
        return u"%1: %2, %3: %4"_s.arg(counters.string(u"builtInSearchDay"_s).value_or(QString()))
            .arg(counters.integer(u"builtInSearchCount"_s).value_or(0))
            .arg(counters.string(u"builtInSearchMonth"_s).value_or(QString()))
            .arg(counters.integer(u"builtInSearchMonthCount"_s).value_or(0));
    };
    EXPECT_EQ(counted(), u"2026-03-01: 1, 2026-03: 1"_s);
    EXPECT_EQ(counted(), u"2026-03-01: 2, 2026-03: 2"_s);
    clock.advance(24h);
    EXPECT_EQ(counted(), u"2026-03-02: 1, 2026-03: 3"_s);
    clock.advance(24h * 31);
    EXPECT_EQ(counted(), u"2026-04-02: 1, 2026-04: 1"_s);
    fake->answer(503, {});
    EXPECT_TRUE(errorOfSearch());
    EXPECT_EQ(told, 4);
    EXPECT_EQ(counted(), u"2026-04-02: 2, 2026-04: 2"_s);
}

TEST_F(WebSearchTest, SaysWhyASearchFailed)
{
    const auto lost =
        std::make_exception_ptr(TransportError(TransportError::Code::ConnectionLost, u"lost"_s));
    const QByteArray tooMuch(2 << 20, ' ');
    const struct {
        FakeHttpSession::Answer answer;
        Plain brave;
        Plain builtIn;
    } cases[] = {
        {{.status = 401}, Plain::searchKeyRejected, Plain::builtInSearchUnavailable},
        {{.status = 403}, Plain::searchKeyRejected, Plain::builtInSearchUnavailable},
        {{.status = 429}, Plain::searchFailed, Plain::builtInSearchUnavailable},
        {{.status = 302}, Plain::searchFailed, Plain::builtInSearchUnavailable},
        {{.pieces = {"{"}}, Plain::searchFailed, Plain::builtInSearchUnavailable},
        {{.pieces = {"[]"}}, Plain::searchFailed, Plain::builtInSearchUnavailable},
        {{.pieces = {R"({"web":[],"results":{}})"}}, Plain::searchFailed, Plain::builtInSearchUnavailable},
        {{.pieces = {tooMuch}}, Plain::searchFailed, Plain::builtInSearchUnavailable},
        {{.sendError = lost}, Plain::offline, Plain::builtInSearchUnavailable},
        {{.pieces = {"{"}, .bodyError = lost}, Plain::offline, Plain::builtInSearchUnavailable},
    };
    const LogCapture log;
    for (const auto &[answer, brave, builtIn] : cases) {
        fake->answer(answer);
        EXPECT_EQ(errorOfSearch(), WebAccessError::Case(builtIn));
        giveKey();
        clock.advance(2s);
        fake->answer(answer);
        EXPECT_EQ(errorOfSearch(), WebAccessError::Case(brave));
        keychain.remove(WebAccessService::searchKeyAccount());
    }
    EXPECT_EQ(log.lines().mid(4, 2), (QStringList{u"app: Built-in search proxy returned HTTP 429"_s,
                                                  u"app: Web search failed with HTTP 429"_s}));
    for (const HttpRequest &request : fake->requests())
        EXPECT_EQ(request.redirects, HttpRequest::Redirects::Answered);
}

TEST_F(WebSearchTest, WithoutAnEndpointOfTheBuildAKeyIsNeeded)
{
    WebAccessService bare(services, {QUrl(u"https://brave.test"_s), {}});
    EXPECT_EQ(errorOf(bare.search(u"news"_s, {})), WebAccessError::Case(Plain::searchNotConfigured));
    EXPECT_EQ(errorOf(bare.search(u" \n"_s, {})), WebAccessError::Case(Plain::emptyQuery));
    giveKey(QString()); // an empty item is no key
    EXPECT_FALSE(bare.usesOwnKey());
    EXPECT_EQ(errorOf(bare.search(u"news"_s, {})), WebAccessError::Case(Plain::searchNotConfigured));
    EXPECT_EQ(bare.searchService(), WebAccessing::SearchService::none);
    EXPECT_EQ(web.searchService(), WebAccessing::SearchService::builtIn);
    keychain.setFailure(KeychainError(KeychainError::Operation::Read, KeychainStatus::NotAvailable));
    EXPECT_TRUE(web.usesOwnKey());
    EXPECT_THROW(search(web), KeychainError) << "its words go to no other service";
    EXPECT_TRUE(fake->requests().empty());
}

TEST_F(WebSearchTest, CallsToBraveKeepTheirGapAndAStopEndsTheWaitForIt)
{
    giveKey();
    std::stop_source stop;
    for (int i = 0; i < 3; ++i)
        fake->answer(200, noResults);
    const std::array searches{TestWait::begin(web.search(u"q"_s, {})),
                              TestWait::begin(web.search(u"q"_s, {})),
                              TestWait::begin(web.search(u"q"_s, {}))};
    const auto stopped = TestWait::begin(web.search(u"q"_s, stop.get_token()));
    stop.request_stop();
    EXPECT_EQ(errorOf(stopped), WebAccessError::Case(Plain::cancelled));
    EXPECT_EQ(fake->requests().size(), 1U);
    clock.advance(1049ms);
    TestWait::settle();
    EXPECT_EQ(fake->requests().size(), 1U);
    clock.advance(1ms);
    TestWait::settle();
    EXPECT_EQ(fake->requests().size(), 2U); // the two that waited don't go together
    clock.advance(1050ms);
    for (const auto &search : searches)
        EXPECT_EQ(errorOf(search), std::nullopt);
    EXPECT_EQ(fake->requests().size(), 3U);
}

TEST_F(WebSearchTest, ASearchThatOutlivesTheServiceIsCancelled)
{
    auto shortLived = std::make_unique<WebAccessService>(services, endpoints);
    fake->answer({.ending = FakeHttpSession::Ending::staysOpen});
    const auto orphan = TestWait::begin(shortLived->search(u"q"_s, {}));
    TestWait::until([&] { return fake->openRequests() == 1; });
    shortLived.reset();
    fake->feed(noResults);
    fake->closeBody();
    EXPECT_EQ(errorOf(orphan), WebAccessError::Case(Plain::cancelled));
    EXPECT_TRUE(counters.keys().isEmpty());
}

TEST_F(WebSearchTest, AKeyIsTestedWithoutBeingStored)
{
    fake->answer(200, noResults);
    TestWait::await(web.testKey(u"new key"_s, {}));
    const HttpRequest &request = fake->requests().at(0);
    EXPECT_EQ(request.url, QUrl(u"https://brave.test/res/v1/web/search?q=test&count=5"_s));
    const auto &sent = request.headers.back();
    EXPECT_EQ(sent.name + '=' + sent.value, "X-Subscription-Token=new key");
    EXPECT_FALSE(web.usesOwnKey());
    clock.advance(2s);
    fake->answer(403, {});
    EXPECT_EQ(errorOf(web.testKey(u"bad"_s, {})), WebAccessError::Case(Plain::searchKeyRejected));
}

} // namespace

} // namespace morvane
