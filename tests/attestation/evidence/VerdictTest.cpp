#include "support/evidence/TestAuthority.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using VeniceAttestationVerifier::Failure;
using Plain = VeniceAttestationVerifier::Failure::Plain;
using Hardware = TDXQuoteVerifier::Failure;
using Parse = TDXQuote::ParseError;
using Graphics = NvidiaGPUEvidence::Failure;

} // namespace

TEST(VerdictTest, VerifiedHoldsWhatWasProved)
{
    Scenario scenario;
    scenario.onDocument = [](QJsonObject &d) { d["signing_address"_L1] = QJsonValue(); };
    const auto question = scenario.question();
    const auto verified = VeniceAttestationVerifier::verify(question);
    EXPECT_EQ(verified.model, scenario.model);
    EXPECT_EQ(verified.modelPublicKey, KnownKey::publicKey());
    EXPECT_EQ(verified.signingAddress, KnownKey::address());
    EXPECT_EQ(verified.nonce, scenario.nonce);
    EXPECT_EQ(verified.stack, scenario.stack);
    EXPECT_EQ(verified.hostLabel, u"host-7"_s);
    EXPECT_EQ(verified.mrtd, scenario.quote.report.mrtd);
    EXPECT_EQ(verified.rtmr3.size(), 48);
    EXPECT_EQ(verified.composeHash->size(), 32);
    EXPECT_EQ(verified.quote, *question.document.intelQuote);
    EXPECT_EQ(verified.verifiedGPUCount, 2);
    EXPECT_TRUE(verified.serverClaimedVerified);
    EXPECT_EQ(verified.verifiedAt, scenario.date);
    EXPECT_EQ(verified.summary(),
              u"e2ee-test-model on Test stack, Test configuration, host host-7, 2 GPUs"_s);

    scenario.stack.requiresGPUEvidence = false;
    const auto withoutGPUs = VeniceAttestationVerifier::verify(scenario.question());
    EXPECT_EQ(withoutGPUs.verifiedGPUCount, 0);
    EXPECT_TRUE(withoutGPUs.summary().endsWith(u", no GPU evidence"_s));
}

TEST(VerdictTest, EachFailureHasItsSentence)
{
    const QString hardware = u"MorvaneGPT could not verify the private cloud's hardware proof"_s;
    const QString setup = u"The private cloud's server is not set up in a way MorvaneGPT accepts"_s;
    const QString graphics = u"MorvaneGPT could not confirm the private cloud's graphics hardware"_s;
    const QString key =
        u"MorvaneGPT could not confirm the private cloud's encryption key belongs to the verified hardware"_s;
    const QString live = u"MorvaneGPT could not confirm the private cloud was answering live"_s;
    const struct {
        Failure::Case failure;
        QString sentence;
    } rows[] = {
        {Failure::Quote{Hardware(Hardware::DebugEnclave{})}, hardware},
        {Failure::QuoteMalformed{Parse(Parse::NoCertificates{})}, hardware},
        {Plain::noQuote, hardware},
        {Failure::MeasurementsNotAllowed{u"m"_s}, setup},
        {Failure::Configuration{VeniceMeasurementAllowlist::Refusal::Case::hostLabelNotAllowed}, setup},
        {Failure::WrongModel{u"a"_s, u"b"_s},
         u"The private cloud answered for a different model than MorvaneGPT asked for"_s},
        {Failure::GPUEvidence{Graphics(Graphics::NoEvidence{})}, graphics},
        {Plain::gpuEvidenceMissing, graphics},
        {Plain::noSigningKey, key},
        {Plain::reportDataDoesNotBindKey, key},
        {Plain::statedAddressDoesNotMatchKey, key},
        {Plain::nonceMismatch, live},
        {Plain::reportDataDoesNotBindNonce, live},
    };
    for (const auto &row : rows) {
        const Failure failure(row.failure);
        EXPECT_EQ(failure.userMessage(), row.sentence + u", so this reply is from the model on your Mac."_s);
        EXPECT_FALSE(failure.isRetryable());
    }
}

TEST(VerdictTest, TheArchitectureOfADeviceFallsBack)
{
    const auto architectures = [](const Scenario &scenario) {
        QStringList list;
        for (const auto &gpu : NvidiaGPUEvidence::parse(scenario.payload()).gpus)
            list.append(gpu.architecture);
        return list;
    };
    Scenario scenario;
    scenario.gpus[0].onEntry = [](QJsonObject &entry) { entry["arch"_L1] = u"BLACKWELL"_s; };
    scenario.gpus[1].onEntry = [](QJsonObject &entry) { entry["arch"_L1] = 5; };
    EXPECT_EQ(architectures(scenario), QStringList({u"BLACKWELL"_s, u"HOPPER"_s}));
    scenario.onPayload = [](QJsonObject &payload) { payload.remove(u"arch"_s); };
    EXPECT_EQ(architectures(scenario), QStringList({u"BLACKWELL"_s, u"unknown"_s}));
}

TEST(VerdictTest, TheAddressNeedsAnUncompressedKey)
{
    const QByteArray key = KnownKey::publicKey();
    EXPECT_EQ(VeniceAttestationVerifier::addressOf(key), KnownKey::address());
    for (const QByteArray &bad : {QByteArray(), key.mid(1), key + '\0', '\x02' + key.mid(1)})
        EXPECT_EQ(VeniceAttestationVerifier::addressOf(bad), std::nullopt);
}

TEST(VerdictTest, BytesThatAreNoJSONObjectAreNotJSON)
{
    for (const char *text : {"", "[]", "{", "null"}) {
        try {
            (void)VeniceAttestationDocument::decode(QByteArrayView(text));
            ADD_FAILURE() << text;
        } catch (const VeniceAttestationDocument::DecodeError &error) {
            EXPECT_EQ(error.caseText(), u"notJSON"_s);
        }
    }
}

} // namespace morvane
