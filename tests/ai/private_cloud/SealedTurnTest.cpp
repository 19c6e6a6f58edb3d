#include "ai/ReplyReading.h"
#include "ai/private_cloud/SealedRequest.h"
#include "ai/private_cloud/VeniceE2EEProvider.h"
#include "attestation/VeniceAttestationService.h"
#include "evidence/TestAuthority.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"
#include "utils/bytes/Hex.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gmock/gmock.h>

#include <deque>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using testing::HasSubstr;
using testing::Not;

const QString asked = u"my secret question"_s;
const QString ending = u", so this reply is from the model on your computer."_s;

// The private key of the server that the test authority vouches for.
SecretBytes serverKey()
{
    return SecretBytes(QByteArray(31, '\0') + '\1');
}

QByteArray chunk(const QJsonObject &delta)
{
    const QJsonObject object{{u"choices"_s, QJsonArray{QJsonObject{{u"delta"_s, delta}}}}};
    return "data: " + QJsonDocument(object).toJson(QJsonDocument::Compact) + "\n\n";
}

// One line of a reply by its first letter: s sealed, x sealed and changed, p plain, r and o the two fields of
// reasoning; anything else as it stands.
QByteArray lineOf(const QString &script, const QByteArray &clientKey)
{
    const QString text = script.sliced(1);
    switch (script[0].unicode()) {
    case u's':
    case u'x': {
        QString sealed = VeniceE2EESession::sealTo(clientKey, text);
        if (script[0] == u'x')
            sealed.back() = sealed.back() == u'0' ? u'1' : u'0';
        return chunk({{u"content"_s, sealed}});
    }
    case u'p':
        return chunk({{u"content"_s, text}});
    case u'r':
        return chunk({{u"reasoning_content"_s, text}});
    case u'o':
        return chunk({{u"reasoning_content"_s, QJsonValue()}, {u"reasoning"_s, text}});
    default:
        return script.toUtf8() + '\n';
    }
}

// The server's end: gives proofs of the test authority and seals its replies to the key of whoever asks. All
// that crosses the wire is kept.
class Cloud final : public HttpSession, public HttpSessionProviding {
public:
    [[nodiscard]] std::shared_ptr<HttpSession> session(EgressFeature feature,
                                                       SensitiveDataSet carrying) override
    {
        EXPECT_EQ(feature, EgressFeature::aiModel);
        carried.push_back(carrying);
        return {std::shared_ptr<void>(), this};
    }

    [[nodiscard]] QCoro::Task<HttpResponse> send(HttpRequest request, std::stop_token stop) override
    {
        throwIfStopped(stop);
        keep(request);
        const bool isProof = request.url.path().endsWith(u"/attestation"_s);
        QByteArray answer = isProof ? QJsonDocument(scenario.document()).toJson() : reply(request);
        auto &script = isProof ? proofs : chats;
        const int status = script.empty() ? 200 : script.front();
        if (!script.empty())
            script.pop_front();
        if (status < 0)
            throw TransportError(static_cast<TransportError::Code>(-status), u"Gone."_s);
        wire += answer;
        auto [body, producer] = AsyncStream<QByteArray>::make();
        producer.yield(status == 200 ? answer : QByteArray(9000, '!'));
        open = staysOpen && !isProof ? std::optional(producer) : std::nullopt;
        if (!open)
            producer.finish();
        HttpResponse response{status, request.url, {}, std::move(body)};
        co_return response;
    }

    Scenario scenario;
    std::deque<int> proofs; // statuses, a TransportError's code as a negative number; 200 when none is left
    std::deque<int> chats;
    QStringList lines;
    bool staysOpen = false;
    std::optional<AsyncStream<QByteArray>::Producer> open;
    std::vector<SensitiveDataSet> carried;
    std::vector<HttpRequest> requests;
    QByteArray wire;

    // P for each question for a proof, C for each turn.
    [[nodiscard]] QString kinds() const
    {
        QString letters;
        for (const HttpRequest &request : requests)
            letters += request.method == "GET" ? u'P' : u'C';
        return letters;
    }
    [[nodiscard]] static QByteArray header(const HttpRequest &request, const QByteArray &name)
    {
        for (const HttpHeader &header : request.headers) {
            if (header.name == name)
                return header.value;
        }
        return "absent";
    }

private:
    void keep(const HttpRequest &request)
    {
        wire += request.url.toEncoded() + request.body;
        for (const HttpHeader &header : request.headers)
            wire += header.name + header.value;
        requests.push_back(request);
    }
    [[nodiscard]] QByteArray reply(const HttpRequest &request) const
    {
        QByteArray body;
        for (const QString &line : lines)
            body += lineOf(line, QByteArray::fromHex(header(request, "X-Venice-TEE-Client-Pub-Key")));
        return body;
    }
};

class SealedTurnTest : public testing::Test {
protected:
    SealedTurnTest()
    {
        configuration.baseURLString = u"https://cloud.invalid/v1"_s;
        configuration.model = cloud.scenario.model;
        configuration.apiKey = u"service-key"_s;
        configuration.temperature = 0.5;
        configuration.maxOutputTokens = 321;
        configuration.proofRow = QUuid::createUuid();
        make(0ms);
    }
    ~SealedTurnTest() override { TestWait::settle(); }

    void make(std::chrono::milliseconds pause)
    {
        provider.emplace(service, cloud, ledger, clock, &watch, pause);
    }

    AsyncStream<AIStreamEvent> start(std::vector<AITool> tools = {})
    {
        return provider->streamReply({{.role = AIMessage::Role::user, .content = asked}}, configuration,
                                     std::move(tools));
    }

    // The rows' places, with what the refused ones say.
    [[nodiscard]] QStringList rows() const
    {
        QStringList all;
        for (const ProofLedger::Entry &row : ledger.snapshot().entries) {
            EXPECT_EQ(row.attestation.has_value(), row.place.code() == u"verified-enclave"_s);
            EXPECT_EQ(row.acceptedServersList, u"Built into this version of MorvaneGPT"_s);
            all += row.place.code() + u' ' + row.place.model + u' ' + row.purpose +
                   (row.note ? u": "_s + *row.note : QString());
        }
        return all;
    }

    [[nodiscard]] bool keepsProof()
    {
        const auto before = cloud.requests.size();
        (void)TestWait::await(service.verifiedEnclave(configuration.model, {}, {}));
        return cloud.requests.size() == before;
    }

    [[nodiscard]] bool said(const QString &line) const
    {
        return log.lines().contains(u"ai-provider: "_s + line);
    }

    Cloud cloud;
    ManualClock clock{cloud.scenario.date};
    Work work{clock};
    VeniceAttestationService service{{.baseURLString = u"https://cloud.invalid/v1"_s,
                                      .sessions = cloud,
                                      .clock = clock,
                                      .work = work,
                                      .pins = cloud.scenario.pins,
                                      .fixedAllowlist = cloud.scenario.allowlist(),
                                      .makeNonce = [this] { return cloud.scenario.nonce; }}};
    ProofLedger ledger;
    ProofWatch watch;
    AIConfiguration configuration;
    LogCapture log;
    std::optional<VeniceE2EEProvider> provider;
};

TEST_F(SealedTurnTest, SendsTheTwoTextsSealedAndNothingElseOfThem)
{
    configuration.systemPrompt = u"Be brief."_s;
    configuration.purpose = u"title"_s;
    configuration.carrying = SensitiveData::memory; // what that means is the gate's to say
    cloud.lines = {u"sHello"_s, u"s, you."_s, u"data: [DONE]"_s, u"sbehind the end"_s};
    const Reply reply = readReply(start());
    EXPECT_EQ(reply.error, std::nullopt);
    EXPECT_EQ(reply.text(), u"Hello, you."_s);
    ASSERT_EQ(cloud.kinds(), u"PC"_s);
    const HttpRequest sent = cloud.requests[1];
    EXPECT_EQ(sent.method, "POST");
    EXPECT_EQ(sent.url, QUrl(u"https://cloud.invalid/v1/chat/completions"_s));
    EXPECT_EQ(sent.timeout, 120s);
    EXPECT_EQ(Cloud::header(sent, "Content-Type"), "application/json");
    EXPECT_EQ(Cloud::header(sent, "Authorization"), "Bearer service-key");
    EXPECT_EQ(Cloud::header(sent, "X-Venice-TEE-Client-Pub-Key").size(), 130);
    EXPECT_EQ(Cloud::header(sent, "X-Venice-TEE-Model-Pub-Key"), KnownKey::publicKey().toHex());
    EXPECT_EQ(Cloud::header(sent, "X-Venice-TEE-Signing-Algo"), "ecdsa");
    QJsonObject body = QJsonDocument::fromJson(sent.body).object();
    const QJsonArray messages = body.take(u"messages"_s).toArray();
    EXPECT_EQ(QJsonDocument(body).toJson(QJsonDocument::Compact),
              "{\"max_tokens\":321,\"model\":\"e2ee-test-model\",\"stream\":true,\"temperature\":0.5,"
              "\"venice_parameters\":{\"include_venice_system_prompt\":false}}");
    ASSERT_EQ(messages.size(), 2);
    EXPECT_EQ(messages[0].toObject().keys(), (QStringList{u"content"_s, u"role"_s}));
    EXPECT_EQ(messages[0]["role"_L1], u"system"_s);
    EXPECT_EQ(messages[1]["role"_L1], u"user"_s);
    const SealedPrompt prompt = SealedRequest::prompt({{.content = asked}}, configuration, {});
    EXPECT_TRUE(prompt.system.startsWith(u"Be brief.\n\nABILITIES"_s));
    EXPECT_EQ(VeniceE2EESession::openWith(serverKey(), messages[0]["content"_L1].toString()), prompt.system);
    EXPECT_EQ(VeniceE2EESession::openWith(serverKey(), messages[1]["content"_L1].toString()), prompt.prompt);
    for (const char *words : {"secret", "brief", "Hello", "ABILITIES"})
        EXPECT_THAT(cloud.wire.toStdString(), Not(HasSubstr(words)));
    EXPECT_EQ(rows(), QStringList{u"verified-enclave e2ee-test-model title"_s});
    const ProofLedger::Entry row = ledger.snapshot().entries[0];
    EXPECT_EQ(row.id, configuration.proofRow);
    EXPECT_EQ(row.carrying, configuration.carrying);
    EXPECT_EQ(cloud.carried, (std::vector<SensitiveDataSet>{configuration.carrying, {}}));
    EXPECT_EQ(row.attestation->nonce, cloud.scenario.nonce);
    EXPECT_EQ(TDXQuote::parse(row.attestation->quote).report.mrtd, row.attestation->mrtd);
    EXPECT_EQ(row.attestation->modelPublicKey, KnownKey::publicKey());
    EXPECT_EQ(row.attestation->verifiedGPUCount, 2);
    EXPECT_TRUE(watch.run()->isOver);
    EXPECT_EQ(watch.run()->at(ProofWatch::Stage::sealing), ProofWatch::State::passed);

    // The prompt stands in it once, and no two attempts share a key.
    const std::vector<AIMessage> withPrompt{{.role = AIMessage::Role::system, .content = u"Be brief."_s},
                                            {.content = asked}};
    EXPECT_EQ(SealedRequest::prompt(withPrompt, configuration, {}).system, prompt.system);
    configuration.apiKey = QString();
    (void)readReply(start());
    ASSERT_EQ(cloud.kinds(), u"PCC"_s);
    EXPECT_EQ(Cloud::header(cloud.requests[2], "Authorization"), "absent");
    EXPECT_NE(Cloud::header(cloud.requests[2], "X-Venice-TEE-Client-Pub-Key"),
              Cloud::header(sent, "X-Venice-TEE-Client-Pub-Key"));
    EXPECT_TRUE(watch.run()->isFromEarlier);
    configuration.baseURLString = u"  "_s;
    EXPECT_EQ(readReply(start()).error, ProviderError(ProviderError::Plain::notConfigured));
    EXPECT_EQ(cloud.kinds(), u"PCC"_s);
}

TEST_F(SealedTurnTest, EveryFailureEndsInItsWordsRowsAndRequests)
{
    using Plain = ProviderError::Plain;
    const auto unverified = [](const QString &what) {
        return ProviderError(ProviderError::EnclaveUnverified{what + ending});
    };
    const auto busy = [](const QString &what) {
        return ProviderError(ProviderError::PrivateCloudBusy{what + ending});
    };
    const auto unavailable = [](int status) {
        return ProviderError(ProviderError::PrivateCloudUnavailable{status});
    };
    const QString verified = u"verified-enclave e2ee-test-model chat"_s;
    const QString refused = u"enclave-refused e2ee-test-model chat: "_s;
    const QString noProof = u"MorvaneGPT could not reach the private cloud's hardware proof"_s;
    const QString noTime = u"The private cloud is busy right now"_s;
    const QString stale = u"MorvaneGPT could not confirm the private cloud was answering live"_s;
    const QString pausing = u"Venice attestation rate limited; asking once more after a short pause"_s;
    const auto again = [](int status) {
        return u"Sealed turn refused upstream (HTTP %1); asking for a fresh proof and trying once more"_s.arg(
            status);
    };
    const struct {
        const char *name;
        std::deque<int> proofs;
        std::deque<int> chats;
        std::optional<ProviderError> error;
        QString requests;
        QStringList rows;
        QStringList log;
        bool keepsProof;
    } cases[] = {
        {"429 once", {429}, {}, {}, u"PPC"_s, {verified}, {pausing}, true},
        {"429 twice",
         {429, 429},
         {},
         busy(noTime),
         u"PP"_s,
         {refused + noTime + ending},
         {pausing, u"Venice attestation rate limited"_s},
         false},
        {"no proof",
         {500},
         {},
         busy(noProof),
         u"P"_s,
         {refused + noProof + ending},
         {u"Venice attestation unavailable"_s},
         false},
        {"dead", {-6}, {}, busy(noProof), u"P"_s, {refused + noProof + ending}, {}, false},
        {"429, then dead", {429, -6}, {}, busy(noProof), u"PP"_s, {refused + noProof + ending}, {}, false},
        {"503, then good", {}, {503}, {}, u"PCPC"_s, {verified, verified}, {again(503)}, true},
        {"503 twice",
         {},
         {503, 500},
         unavailable(500),
         u"PCPC"_s,
         {verified, verified},
         {again(503), u"Sealed turn refused again after a fresh proof (HTTP 500)"_s},
         false},
        {"504",
         {},
         {504},
         unavailable(504),
         u"PC"_s,
         {verified},
         {u"Sealed turn timed out upstream (HTTP 504); not retried"_s},
         true},
        {"401, then 504", {}, {401, 504}, unavailable(504), u"PCPC"_s, {verified, verified}, {}, false},
        {"503, then no proof",
         {200, 500},
         {503},
         busy(noProof),
         u"PCP"_s,
         {verified, refused + noProof + ending},
         {again(503)},
         false},
        {"time-out", {}, {-3}, ProviderError(Plain::networkTimeout), u"PC"_s, {verified}, {}, true},
        {"lost", {}, {-7}, ProviderError(Plain::networkUnavailable), u"PC"_s, {verified}, {}, true},
    };
    for (const auto &one : cases) {
        SCOPED_TRACE(one.name);
        cloud.lines = {u"sHello"_s};
        cloud.proofs = one.proofs;
        cloud.chats = one.chats;
        configuration.proofRow = QUuid::createUuid();
        const Reply reply = readReply(start());
        EXPECT_EQ(reply.error, one.error);
        EXPECT_EQ(reply.text(), one.error ? QString() : u"Hello"_s);
        EXPECT_EQ(cloud.kinds(), one.requests);
        EXPECT_EQ(rows(), one.rows);
        for (const QString &line : one.log)
            EXPECT_TRUE(said(line)) << line.toStdString();
        EXPECT_THAT(cloud.wire.toStdString(), Not(HasSubstr("secret")));
        const auto entries = ledger.snapshot().entries;
        EXPECT_EQ(entries.front().id, configuration.proofRow);
        if (entries.size() > 1) {
            EXPECT_NE(entries.back().id, entries.front().id);
            ASSERT_FALSE(reply.events.empty());
            EXPECT_EQ(reply.events.front(), AIStreamEvent(AIStream::Recorded{entries.back().id}));
        }
        EXPECT_EQ(keepsProof(), one.keepsProof);
        service.forget(configuration.model);
        cloud.requests.clear();
        ledger.clear();
    }
    cloud.scenario.onDocument = [](QJsonObject &document) { document.insert(u"nonce"_s, u"00"_s); };
    EXPECT_EQ(readReply(start()).error, unverified(stale));
    EXPECT_EQ(rows(), QStringList{refused + stale + ending});
    EXPECT_TRUE(said(u"Venice attestation refused: nonceMismatch"_s));
    cloud.scenario.onDocument = [](QJsonObject &document) {
        document.insert(u"model"_s, u"x"_s.repeated(9000));
    };
    EXPECT_NE(readReply(start()).error, std::nullopt);
    for (const QString &line : log.lines())
        EXPECT_LT(line.size(), 400); // whatever a server says
    EXPECT_EQ(cloud.kinds(), u"PP"_s);
}

TEST_F(SealedTurnTest, AKeyThatIsNoneIsNeverSentTo)
{
    cloud.scenario.signingKey[64] = static_cast<char>(cloud.scenario.signingKey[64] ^ 1); // off the curve
    cloud.scenario.onDocument = [](QJsonObject &document) { document.remove(u"signing_address"_s); };
    EXPECT_EQ(readReply(start()).error,
              ProviderError(ProviderError::EnclaveUnverified{
                  u"MorvaneGPT could not set up encryption to the private cloud"_s + ending}));
    EXPECT_EQ(cloud.kinds(), u"P"_s);
    EXPECT_EQ(rows().size(), 1); // left before the encryption was tried
    EXPECT_EQ(watch.run()->at(ProofWatch::Stage::sealing), ProofWatch::State::refused);
}

TEST_F(SealedTurnTest, ReadsWhatIsSealedAndDropsTheRest)
{
    using Plain = ProviderError::Plain;
    const ProviderError changed(ProviderError::EnclaveUnverified{
        u"A reply from the private cloud could not be decrypted"_s + ending});
    const ProviderError plain(ProviderError::EnclaveUnverified{
        u"A reply from the private cloud did not arrive encrypted"_s + ending});
    const QString dropped = u"Venice reply carried 1 unsealed chunks; they were dropped"_s;
    const QString length = u"data: {\"choices\":[{\"delta\":{},\"finish_reason\":\"length\"}]}"_s;
    const QString hex = u"p"_s + u"a"_s.repeated(185);
    const QString answer = u"word "_s.repeated(130); // more than is held back
    const struct {
        const char *name;
        QStringList lines;
        QString shown; // T thinking, L the limit, calls by name, the texts
        std::optional<ProviderError> error;
        QString log;
    } cases[] = {
        {"one plain among sealed", {u"sa"_s, u"pb"_s, u"sc"_s}, u"ac"_s, {}, dropped},
        {"only plain",
         {u"pb"_s, u"pc"_s},
         {},
         plain,
         u"Venice reply carried 2 unsealed chunks and nothing sealed"_s},
        {"185 digits", {hex, u"sa"_s}, u"a"_s, {}, dropped},
        {"186 digits", {hex + u"a"_s}, {}, changed, u"Venice reply chunk did not decrypt"_s},
        {"no digit among many", {hex + u"ag"_s, u"sa"_s}, u"a"_s, {}, dropped},
        {"changed", {u"sa"_s, u"xb"_s, u"sc"_s}, u""_s, changed, u"Venice reply chunk did not decrypt"_s},
        {"nothing",
         {u": comment"_s, u"data: {"_s, u"data: []"_s},
         {},
         ProviderError(Plain::emptyResponse),
         {}},
        {"only reasoning", {u"rthought"_s, length}, u"T"_s, ProviderError(Plain::emptyResponse), {}},
        {"both fields of reasoning", {u"ra"_s, u"ob"_s, u"sanswer"_s, u"oc"_s}, u"Tanswer"_s, {}, {}},
        {"reasoning behind the text", {u"s"_s + answer, u"rlate"_s}, answer, {}, {}},
        {"thinking in the text", {u"s <think>a"_s, u"sb</thi"_s, u"snk>\nanswer"_s}, u"answer"_s, {}, {}},
        {"without its opening tag",
         {u"sabc</think> x"_s},
         u"x"_s,
         {},
         u"Venice reply carried thinking inside the answer with no opening tag; it was dropped"_s},
        {"the limit", {u"sa"_s, length}, u"aL"_s, {}, {}},
        {"no call in a block",
         {u"sText<<<MORVANE_TOOL"_s, u"s_CALLS>>>{}"_s},
         u"Text"_s,
         {},
         u"Venice tool block did not parse"_s},
        {"a call",
         {u"rlong"_s, u"s<<<MORVANE_TOOL_CALLS>>>{\"calls\":[{\"name\":\"f\"}]}"_s,
          u"s<<<END_MORVANE_TOOL_CALLS>>> behind"_s},
         u"T[f]"_s,
         {},
         {}},
    };
    for (const auto &one : cases) {
        SCOPED_TRACE(one.name);
        cloud.lines = one.lines;
        const Reply reply = readReply(start());
        QString shown;
        for (const AIStreamEvent &event : reply.events) {
            if (const auto *text = std::get_if<AIStream::Text>(&event))
                shown += text->piece;
            else if (const auto *calls = std::get_if<AIStream::ToolCalls>(&event))
                shown += u'[' + calls->calls[0].name + u']';
            else if (std::holds_alternative<AIStream::Thinking>(event))
                shown += u'T';
            else if (std::holds_alternative<AIStream::TruncatedByTokenLimit>(event))
                shown += u'L';
        }
        EXPECT_EQ(shown, one.shown);
        EXPECT_EQ(reply.error, one.error);
        EXPECT_TRUE(one.log.isEmpty() || said(one.log));
    }
}

TEST_F(SealedTurnTest, BoundsWhatAServerMaySend)
{
    cloud.lines = {u"sText<<<MORVANE_TOOL_CALLS>>>"_s};
    for (int i = 0; i < 9; ++i)
        cloud.lines += u"s"_s + u"x"_s.repeated(500'000);
    EXPECT_EQ(readReply(start()).error, ProviderError(ProviderError::Plain::replyTooLarge));
    cloud.lines = {u"sa"_s, u"data: "_s + u"x"_s.repeated(3'000'000)};
    EXPECT_EQ(readReply(start()).error, ProviderError(ProviderError::Plain::replyTooLarge));
}

TEST_F(SealedTurnTest, WaitsBeforeItAsksABusyServerAgain)
{
    make(2s);
    cloud.proofs = {429};
    cloud.lines = {u"sHello"_s};
    const auto reply = std::make_shared<TestWait::Outcome<Reply>>();
    TestWait::collect(readTask<Reply>(start()), reply);
    TestWait::until([&] { return clock.pendingAlarms() == 1; });
    clock.advance(1999ms);
    EXPECT_EQ(cloud.kinds(), u"P"_s);
    clock.advance(1ms);
    TestWait::until([&] { return reply->done; });
    EXPECT_EQ(cloud.kinds(), u"PPC"_s);
    EXPECT_EQ(reply->value->text(), u"Hello"_s);
}

TEST_F(SealedTurnTest, EndsWhereItIsStopped)
{
    make(2s);
    cloud.proofs = {429};
    {
        const auto waiting = start();
        TestWait::until([&] { return clock.pendingAlarms() == 1; });
    }
    TestWait::settle();
    EXPECT_TRUE(watch.run()->isOver);
    clock.advance(5s);
    EXPECT_EQ(cloud.kinds(), u"P"_s);
    EXPECT_EQ(rows(), QStringList());

    cloud.lines = {u"rthought"_s};
    cloud.staysOpen = true;
    {
        auto stream = start();
        TestWait::until([&] { return stream.takeBuffered() == AIStreamEvent(AIStream::Thinking{}); });
    }
    TestWait::settle();
    EXPECT_TRUE(cloud.open->stopToken().stop_requested());
    EXPECT_EQ(rows().size(), 1);
}

} // namespace

} // namespace morvane
