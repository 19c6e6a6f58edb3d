#include "attestation/VeniceAttestationService.h"
#include "evidence/ListKey.h"
#include "evidence/TestAuthority.h"
#include "security/InMemoryKeychainService.h"
#include "support/Await.h"
#include "support/FakeHttpSession.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"

#include <QJsonDocument>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Verified = VeniceAttestationVerifier::Verified;

const QString model = u"e2ee-test-model"_s;

class AttestationServiceTest : public testing::Test {
protected:
    AttestationServiceTest() { make(u" https://cloud.invalid/v1?x=y "_s); }
    ~AttestationServiceTest() override
    {
        service.reset();
        TestWait::settle();
    }

    void make(const QString &baseURL, std::function<QByteArray()> nonce = {})
    {
        if (!nonce)
            nonce = [this] { return scenario.nonce; };
        service.emplace(VeniceAttestationService::Parts{.baseURLString = baseURL,
                                                        .sessions = network,
                                                        .clock = clock,
                                                        .work = work,
                                                        .lists = lists ? &*lists : nullptr,
                                                        .pins = scenario.pins,
                                                        .fixedAllowlist = scenario.allowlist(),
                                                        .makeNonce = std::move(nonce)});
    }

    // Lists decide from now on. Nothing is built in.
    void useLists()
    {
        lists.emplace(work, VeniceMeasurementLists::Parts{
                                VeniceMeasurementListStore(vault, folder.path()),
                                VeniceMeasurementAnchorStore(&keychain),
                                VeniceListFetch(network, clock, u"https://cloud.invalid/v1"_s),
                                {},
                                {key.publicKey()}});
        make(u"https://cloud.invalid/v1"_s);
    }

    void serveProof() { network.fake->answer(200, QJsonDocument(scenario.document()).toJson()); }
    [[nodiscard]] QByteArray list(int version, bool acceptsServer = true) const
    {
        QJsonObject object = scenario.signedList();
        object.insert(u"listVersion"_s, version);
        if (!acceptsServer)
            object.insert(u"entries"_s, QJsonArray());
        return QJsonDocument(object).toJson();
    }
    void serveList(const QByteArray &bytes)
    {
        network.fake->answer(200, bytes);
        network.fake->answer(200, key.signatureFile(bytes));
    }

    QCoro::Task<Verified> ask()
    {
        return service->verifiedEnclave(model, ProofRun(&watch, model, clock.now()), stop.get_token());
    }

    // How the asking ends: "ok", or what is thrown.
    QString outcome()
    {
        try {
            (void)TestWait::await(ask());
            return u"ok"_s;
        } catch (const VeniceAttestationVerifier::Failure &failure) {
            return failure.caseText();
        } catch (const VeniceAttestationDocument::DecodeError &error) {
            return error.caseText();
        } catch (const VeniceAttestationService::Failure &failure) {
            if (const auto *http = std::get_if<VeniceAttestationService::Failure::Http>(&failure.reason()))
                return u"http(%1)"_s.arg(http->status);
            if (const auto *lost =
                    std::get_if<VeniceAttestationService::Failure::Transport>(&failure.reason()))
                return u"transport: "_s + lost->text;
            return u"badEndpoint"_s;
        } catch (const std::exception &error) {
            return QString::fromLatin1(error.what());
        }
    }

    // One letter for each stage of the latest run, in the order in which they are shown.
    [[nodiscard]] QString stages() const
    {
        QString letters;
        for (const ProofWatch::State state : watch.run()->states)
            letters += QChar(u"WRPNX"[static_cast<int>(state)]);
        return watch.run()->isOver ? letters + u'.' : letters;
    }

    [[nodiscard]] int proofRequests() const
    {
        return static_cast<int>(std::ranges::count_if(network.fake->requests(), [](const auto &request) {
            return request.url.path() == u"/v1/attestation"_s;
        }));
    }
    void pass(std::chrono::seconds time)
    {
        clock.advance(time);
        scenario.date = clock.now();
    }

    Scenario scenario;
    const ListKey key;
    QTemporaryDir folder;
    ManualClock clock{scenario.date};
    Work work{clock};
    InMemoryKeychainService keychain;
    LocalDataVault vault{keychain};
    FakeHttpSessionProvider network;
    ProofWatch watch;
    std::stop_source stop;
    LogCapture log;
    std::optional<VeniceMeasurementLists> lists;
    std::optional<VeniceAttestationService> service;
};

TEST_F(AttestationServiceTest, AsksOnceForHalfAnHour)
{
    serveProof();
    EXPECT_EQ(TestWait::await(ask()).verifiedAt, clock.now());
    EXPECT_EQ(stages(), u"PPPPPPW."_s);
    EXPECT_TRUE(log.lines().contains(u"ai-provider: Venice enclave verified: e2ee-test-model on Test stack, "
                                     "Test configuration, host host-7, 2 GPUs"_s))
        << log.lines().join(u'\n').toStdString();
    const HttpRequest &request = network.fake->requests().front();
    EXPECT_EQ(request.url.toString(QUrl::FullyEncoded),
              u"https://cloud.invalid/v1/attestation?model=e2ee-test-model&nonce="_s + u"5a"_s.repeated(32));
    EXPECT_EQ(request.method, "GET");
    ASSERT_EQ(request.headers.size(), 1U);
    EXPECT_EQ(request.headers[0].name + ':' + request.headers[0].value, "Accept:application/json");
    EXPECT_EQ(request.timeout, 30s);
    EXPECT_EQ(network.asked[0], std::pair(EgressFeature::aiModel, SensitiveDataSet()));

    clock.advance(1799s);
    EXPECT_EQ(outcome(), u"ok"_s);
    EXPECT_TRUE(watch.run()->isFromEarlier);
    EXPECT_EQ(proofRequests(), 1);
    clock.advance(1s);
    network.fake->answer(500, {});
    EXPECT_EQ(outcome(), u"http(500)"_s); // and nothing is kept
    EXPECT_EQ(stages(), u"XWWWWWW."_s);
    serveProof();
    EXPECT_EQ(outcome(), u"ok"_s);
    service->forget(model);
    serveProof();
    EXPECT_EQ(outcome(), u"ok"_s);
    EXPECT_EQ(proofRequests(), 4);

    scenario.stack.requiresGPUEvidence = false;
    make(u"https://cloud.invalid/v1"_s);
    serveProof();
    EXPECT_EQ(outcome(), u"ok"_s);
    EXPECT_EQ(stages(), u"PPPPNPW."_s);
    EXPECT_EQ(outcome(), u"ok"_s);
    EXPECT_EQ(stages(), u"PPPPNPW."_s);
    EXPECT_EQ(service->acceptedListText(), u"Built into this version of MorvaneGPT"_s);
}

TEST_F(AttestationServiceTest, ThrowsWhatStoodInTheWay)
{
    const TransportError lost(TransportError::Code::CannotConnect, u"No way there."_s);
    const TransportError ended(TransportError::Code::Cancelled, u"Ended."_s);
    const auto document = [this](auto change) {
        Scenario changed = scenario;
        change(changed);
        return QJsonDocument(changed.document()).toJson();
    };
    const struct {
        FakeHttpSession::Answer answer;
        QString outcome;
        QString stages;
    } cases[] = {
        {{.status = 429}, u"http(429)"_s, u"XWWWWWW."_s},
        {{.status = 302, .pieces = {"{}"}}, u"http(302)"_s, u"XWWWWWW."_s},
        {{.sendError = std::make_exception_ptr(lost)}, u"transport: No way there."_s, u"XWWWWWW."_s},
        {{.sendError = std::make_exception_ptr(ended)}, u"cancelled"_s, u"XWWWWWW."_s},
        {{.pieces = {"{", QByteArray(2 * 1024 * 1024, ' ')}}, u"transport"_s, u"XWWWWWW."_s},
        {{.pieces = {"[]"}}, u"notJSON"_s, u"XWWWWWW."_s},
        {{.pieces = {"{\"intel_quote\": \"x\"}"}}, u"noQuote"_s, u"XWWWWWW."_s},
        {{.pieces = {document([](Scenario &s) { s.nonce = QByteArray(32, 'n'); })}},
         u"nonceMismatch"_s,
         u"PWWWWXW."_s},
        {{.pieces = {document([](Scenario &s) { s.quote.onQuote = [](QByteArray &q) { q[700] ^= 1; }; })}},
         u"quote"_s,
         u"PXWWWPW."_s},
        {{.pieces = {document([](Scenario &s) { s.quote.report.rtmr1[0] ^= 1; })}},
         u"measurementsNotAllowed"_s,
         u"PPXWWPW."_s},
        {{.pieces = {document([](Scenario &s) { s.configurationText += u' '; })}},
         u"configuration"_s,
         u"PPPXWPW."_s},
        {{.pieces = {document([](Scenario &s) { s.gpus[1].onReport = [](QByteArray &r) { r[99] ^= 1; }; })}},
         u"gpuEvidence"_s,
         u"PPPPXPW."_s},
    };
    for (const auto &[answer, expected, states] : cases) {
        network.fake->answer(answer);
        const QString got = outcome();
        EXPECT_TRUE(got.startsWith(expected)) << got.toStdString() << " for " << expected.toStdString();
        EXPECT_EQ(stages(), states) << expected.toStdString();
    }
    const auto asked = network.fake->requests().size();
    EXPECT_EQ(asked, std::size(cases)); // none was kept, and none asked for twice
    make(u"nowhere"_s);
    EXPECT_EQ(outcome(), u"badEndpoint"_s);
    make(u"https://cloud.invalid"_s, []() -> QByteArray { throw std::runtime_error("no randomness"); });
    EXPECT_EQ(outcome(), u"no randomness"_s);
    EXPECT_EQ(network.fake->requests().size(), asked);
}

TEST_F(AttestationServiceTest, AListThatIsOnItsWayComesFirstWithinItsWait)
{
    useLists();
    serveList(list(1));
    serveProof();
    ASSERT_EQ(outcome(), u"ok"_s);

    // Another list within the wait: the proof is asked for anew.
    pass(21590s);
    serveProof();
    ASSERT_EQ(outcome(), u"ok"_s);
    pass(10s);
    serveList(list(2));
    serveProof();
    EXPECT_EQ(outcome(), u"ok"_s);
    EXPECT_EQ(proofRequests(), 3);
    EXPECT_EQ(service->acceptedListText().section(u',', 0, 0), u"Version 2"_s);

    // One that takes longer than the wait: the proof is taken, and goes once the list is there.
    pass(21590s);
    serveProof();
    ASSERT_EQ(outcome(), u"ok"_s);
    pass(10s);
    const QByteArray third = list(3, false);
    network.fake->answer({.pieces = {third}, .ending = FakeHttpSession::Ending::staysOpen});
    const auto slow = TestWait::begin(ask());
    TestWait::until([&] { return network.fake->openRequests() == 1; });
    TestWait::until([&] { return clock.pendingAlarms() > 0; });
    clock.advance(1999ms);
    EXPECT_FALSE(slow->done);
    clock.advance(1ms);
    EXPECT_NO_THROW(TestWait::result(slow));
    EXPECT_EQ(proofRequests(), 4);
    network.fake->answer(200, key.signatureFile(third));
    network.fake->closeBody();
    TestWait::until([&] { return !log.lines().filter(u"version 3 accepted"_s).isEmpty(); });
    TestWait::settle();
    serveProof();
    EXPECT_EQ(outcome(), u"measurementsNotAllowed(\"e2ee-test-model\")"_s);
    EXPECT_EQ(proofRequests(), 5);
}

TEST_F(AttestationServiceTest, AProofWaitsForTheListThatIsOnItsWayHoweverLong)
{
    useLists();
    const QByteArray first = list(1);
    network.fake->answer({.pieces = {first}, .ending = FakeHttpSession::Ending::staysOpen});
    serveProof();
    const auto slow = TestWait::begin(ask());
    TestWait::until([&] { return proofRequests() == 1; });
    clock.advance(15s);
    TestWait::settle();
    EXPECT_FALSE(slow->done);
    network.fake->answer(200, key.signatureFile(first));
    network.fake->closeBody();
    EXPECT_NO_THROW(TestWait::result(slow));
}

TEST_F(AttestationServiceTest, EndsWhenItIsStoppedOrGoes)
{
    network.fake->answer({.neverAnswers = true});
    const auto stopped = TestWait::begin(ask());
    stop.request_stop();
    EXPECT_THROW(TestWait::result(stopped), CancelledError);
    EXPECT_EQ(stages(), u"XWWWWWW."_s);
    stop = std::stop_source();
    serveProof();
    const auto orphaned = TestWait::begin(ask());
    service.reset();
    EXPECT_THROW(TestWait::result(orphaned), CancelledError);
}

} // namespace

} // namespace morvane
