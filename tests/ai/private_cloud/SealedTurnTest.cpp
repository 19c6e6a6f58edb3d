#include "ai/private_cloud/SealedTurnFixture.h"

namespace morvane {

using testing::HasSubstr;
using testing::Not;

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

} // namespace morvane
