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

TEST_F(SealedTurnTest, ASecondAttemptHasAProofAndARowOfItsOwnAndThereIsNoThird)
{
    const auto unavailable = [](int status) {
        return ProviderError(ProviderError::PrivateCloudUnavailable{status});
    };
    const QString verified = u"verified-enclave e2ee-test-model chat"_s;
    const QString noProof = u"MorvaneGPT could not reach the private cloud's hardware proof"_s + ending;
    const struct {
        const char *name;
        std::deque<int> proofs;
        std::deque<int> chats;
        std::optional<ProviderError> error;
        QString requests;
        QStringList rows;
    } cases[] = {
        {"503, then good", {}, {503}, {}, u"PCPC"_s, {verified, verified}},
        {"401, then 504", {}, {401, 504}, unavailable(504), u"PCPC"_s, {verified, verified}},
        {"503, then no proof",
         {200, 500},
         {503},
         ProviderError(ProviderError::PrivateCloudBusy{noProof}),
         u"PCP"_s,
         {verified, u"enclave-refused e2ee-test-model chat: "_s + noProof}},
        {"time-out", {}, {-3}, ProviderError(ProviderError::Plain::networkTimeout), u"PC"_s, {verified}},
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
    EXPECT_EQ(cloud.kinds(), u"P"_s);
    EXPECT_EQ(rows().size(), 1); // left before the encryption was tried
    EXPECT_EQ(watch.run()->at(ProofWatch::Stage::sealing), ProofWatch::State::refused);
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
