// One turn over a played server: what is sent, what of the reply is shown, and when it is tried again.

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
using testing::HasSubstr;
using testing::Not;

namespace {

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
        producer.finish();
        HttpResponse response{status, request.url, {}, std::move(body)};
        co_return response;
    }

    Scenario scenario;
    std::deque<int> proofs; // statuses, a TransportError's code as a negative number; 200 when none is left
    std::deque<int> chats;
    QStringList lines;
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

    AsyncStream<AIStreamEvent> start()
    {
        return provider->streamReply({{.role = AIMessage::Role::user, .content = asked}}, configuration, {});
    }

    // What was asked, and the places of the rows with what the refused ones say.
    [[nodiscard]] QString trace() const
    {
        QString all = cloud.kinds();
        for (const ProofLedger::Entry &row : ledger.snapshot().entries) {
            EXPECT_EQ(row.attestation.has_value(), row.place.code() == u"verified-enclave"_s);
            EXPECT_EQ(row.acceptedServersList, u"Built into this version of MorvaneGPT"_s);
            all += u' ' + row.place.code() + (row.note ? u": "_s + *row.note : QString());
        }
        return all;
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
    const ProofLedger::Entry row = ledger.snapshot().entries[0];
    EXPECT_EQ(row.place,
              (ProofLedger::Place{ProofLedger::Place::Kind::verifiedEnclave, u"e2ee-test-model"_s, {}}));
    EXPECT_EQ(row.purpose, u"title"_s);
    EXPECT_EQ(row.carrying, configuration.carrying);
    EXPECT_EQ(row.attestation->nonce, cloud.scenario.nonce);
    EXPECT_EQ(TDXQuote::parse(row.attestation->quote).report.mrtd, row.attestation->mrtd);
    EXPECT_EQ(row.attestation->modelPublicKey, KnownKey::publicKey());
    EXPECT_EQ(row.attestation->verifiedGPUCount, 2);
    EXPECT_EQ(cloud.carried, (std::vector<SensitiveDataSet>{configuration.carrying, {}}));
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

TEST_F(SealedTurnTest, ASecondAttemptHasAProofAndARowOfItsOwnAndThereIsNoThird)
{
    const auto unavailable = [](int status) {
        return ProviderError(ProviderError::PrivateCloudUnavailable{status});
    };
    const QString noProof = u"MorvaneGPT could not reach the private cloud's hardware proof"_s + ending;
    const struct {
        const char *name;
        std::deque<int> proofs;
        std::deque<int> chats;
        std::optional<ProviderError> error;
        QString trace;
    } cases[] = {
        {"503, then good", {}, {503}, {}, u"PCPC verified-enclave verified-enclave"_s},
        {"401, then 504", {}, {401, 504}, unavailable(504), u"PCPC verified-enclave verified-enclave"_s},
        {"503, then no proof",
         {200, 500},
         {503},
         ProviderError(ProviderError::PrivateCloudBusy{noProof}),
         u"PCP verified-enclave enclave-refused: "_s + noProof},
        {"time-out", {}, {-3}, ProviderError(ProviderError::Plain::networkTimeout), u"PC verified-enclave"_s},
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
        EXPECT_EQ(trace(), one.trace);
        EXPECT_THAT(cloud.wire.toStdString(), Not(HasSubstr("secret")));
        const auto entries = ledger.snapshot().entries;
        EXPECT_EQ(entries.front().id, configuration.proofRow);
        if (entries.size() > 1) {
            EXPECT_NE(entries.back().id, entries.front().id);
            ASSERT_FALSE(reply.events.empty());
            EXPECT_EQ(reply.events.front(), AIStreamEvent(AIStream::Recorded{entries.back().id}));
        }
        service.forget(configuration.model);
        cloud.requests.clear();
        ledger.clear();
    }
    cloud.scenario.onDocument = [](QJsonObject &document) {
        document.insert(u"model"_s, u"x"_s.repeated(9000));
    };
    EXPECT_NE(readReply(start()).error, std::nullopt);
    for (const QString &line : log.lines())
        EXPECT_LT(line.size(), 400); // whatever a server says
}

TEST_F(SealedTurnTest, AKeyThatIsNoneIsNeverSentTo)
{
    cloud.scenario.signingKey[64] = static_cast<char>(cloud.scenario.signingKey[64] ^ 1); // off the curve
    cloud.scenario.onDocument = [](QJsonObject &document) { document.remove(u"signing_address"_s); };
    EXPECT_EQ(readReply(start()).error,
              ProviderError(ProviderError::EnclaveUnverified{
                  u"MorvaneGPT could not set up encryption to the private cloud"_s + ending}));
    EXPECT_EQ(trace(), u"P verified-enclave"_s) << "the row is left before the encryption is tried";
    EXPECT_EQ(watch.run()->at(ProofWatch::Stage::sealing), ProofWatch::State::refused);
}

TEST_F(SealedTurnTest, EndsInThePauseWhenItIsStopped)
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
    EXPECT_EQ(trace(), u"P"_s);
}

TEST_F(SealedTurnTest, ReadsWhatIsSealedAndDropsTheRest)
{
    const ProviderError changed(ProviderError::EnclaveUnverified{
        u"A reply from the private cloud could not be decrypted"_s + ending});
    const ProviderError plain(ProviderError::EnclaveUnverified{
        u"A reply from the private cloud did not arrive encrypted"_s + ending});
    const QString hex = u"p"_s + u"a"_s.repeated(185);
    const QString answer = u"word "_s.repeated(130); // more than is held back
    const struct {
        const char *name;
        QStringList lines;
        QString shown; // T thinking, and the texts
        std::optional<ProviderError> error;
    } cases[] = {
        {"one plain among sealed", {u"sa"_s, u"pb"_s, u"sc"_s}, u"ac"_s, {}},
        {"only plain", {u"pb"_s, u"pc"_s}, {}, plain},
        {"185 digits", {hex, u"sa"_s}, u"a"_s, {}},
        {"186 digits", {hex + u"a"_s}, {}, changed},
        {"no digit among many", {hex + u"ag"_s, u"sa"_s}, u"a"_s, {}},
        {"changed", {u"sa"_s, u"xb"_s, u"sc"_s}, u""_s, changed},
        {"both fields of reasoning", {u"ra"_s, u"ob"_s, u"sanswer"_s, u"oc"_s}, u"Tanswer"_s, {}},
        {"reasoning behind the text", {u"s"_s + answer, u"rlate"_s}, answer, {}},
    };
    for (const auto &one : cases) {
        SCOPED_TRACE(one.name);
        cloud.lines = one.lines;
        const Reply reply = readReply(start());
        QString shown;
        for (const AIStreamEvent &event : reply.events) {
            if (const auto *text = std::get_if<AIStream::Text>(&event))
                shown += text->piece;
            else if (std::holds_alternative<AIStream::Thinking>(event))
                shown += u'T';
        }
        EXPECT_EQ(shown, one.shown);
        EXPECT_EQ(reply.error, one.error);
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

} // namespace

} // namespace morvane
