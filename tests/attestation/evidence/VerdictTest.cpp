#include "evidence/TestAuthority.h"
#include "support/TestData.h"
#include "utils/text/UniversalTime.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using VeniceAttestationVerifier::Failure;
using Plain = VeniceAttestationVerifier::Failure::Plain;
using Refusal = VeniceMeasurementAllowlist::Refusal;
using Source = VeniceMeasurementAllowlist::Source;

} // namespace

TEST(VerdictTest, VerifiedHoldsWhatWasProved)
{
    Scenario scenario;
    scenario.onDocument = [](QJsonObject &d) { d.remove(u"signing_address"_s); };
    const auto question = scenario.question();
    const auto verified = VeniceAttestationVerifier::verify(question);
    EXPECT_EQ(verified.model, scenario.model);
    EXPECT_EQ(verified.modelPublicKey, KnownKey::publicKey());
    EXPECT_EQ(verified.signingAddress, KnownKey::address());
    EXPECT_EQ(VeniceAttestationVerifier::addressOf(KnownKey::publicKey().replace(0, 1, "\x02")),
              std::nullopt);
    EXPECT_EQ(verified.nonce, scenario.nonce);
    EXPECT_EQ(verified.stack, scenario.stack);
    EXPECT_EQ(verified.mrtd, scenario.quote.report.mrtd);
    EXPECT_EQ(verified.rtmr3.size(), 48);
    EXPECT_EQ(verified.composeHash->size(), 32);
    EXPECT_EQ(verified.quote, *question.document.intelQuote);
    EXPECT_TRUE(verified.serverClaimedVerified);
    EXPECT_EQ(verified.verifiedAt, scenario.date);
    EXPECT_EQ(verified.summary(),
              u"e2ee-test-model on Test stack, Test configuration, host host-7, 2 GPUs"_s);

    scenario.stack.requiresGPUEvidence = false;
    EXPECT_TRUE(
        VeniceAttestationVerifier::verify(scenario.question()).summary().endsWith(u", no GPU evidence"_s));
}

// What a person reads: of each failure, and of each source of accepted servers.
TEST(VerdictTest, Words)
{
    const Failure::Case failures[] = {
        Failure::Quote{TDXQuoteVerifier::Failure(TDXQuoteVerifier::Failure::DebugEnclave{})},
        Failure::QuoteMalformed{TDXQuote::ParseError(TDXQuote::ParseError::NoCertificates{})},
        Plain::noQuote,
        Failure::MeasurementsNotAllowed{u"m"_s},
        Failure::Configuration{Refusal(Refusal::Case::hostLabelNotAllowed)},
        Failure::WrongModel{u"a"_s, u"b"_s},
        Failure::GPUEvidence{NvidiaGPUEvidence::Failure(NvidiaGPUEvidence::Failure::NoEvidence{})},
        Plain::gpuEvidenceMissing,
        Plain::noSigningKey,
        Plain::reportDataDoesNotBindKey,
        Plain::statedAddressDoesNotMatchKey,
        Plain::nonceMismatch,
        Plain::reportDataDoesNotBindNonce,
    };
    QString words;
    for (const Failure failure : failures) {
        words += failure.caseText() + u": "_s + failure.userMessage() + u'\n';
        EXPECT_FALSE(failure.isRetryable());
    }
    const QDateTime date = UniversalTime::at(QDate(2026, 9, 1));
    for (const Source &source :
         {Source(), Source(Source::SignedList{12, date}), Source(Source::ExpiredList{12, date.addSecs(-1)})})
        words += source.text() + u'\n';
    EXPECT_EQ(words.toStdString(), TestData::text("attestation/words.txt"));
}

TEST(VerdictTest, TheArchitectureOfADeviceFallsBack)
{
    Scenario scenario;
    scenario.gpus[0].onEntry = [](QJsonObject &entry) { entry["arch"_L1] = u"BLACKWELL"_s; };
    scenario.gpus[1].onEntry = [](QJsonObject &entry) { entry["arch"_L1] = 5; };
    const auto gpus = NvidiaGPUEvidence::parse(scenario.payload()).gpus;
    EXPECT_EQ(gpus[0].architecture, u"BLACKWELL"_s);
    EXPECT_EQ(gpus[1].architecture, u"HOPPER"_s);
    scenario.onPayload = [](QJsonObject &payload) { payload.remove(u"arch"_s); };
    EXPECT_EQ(NvidiaGPUEvidence::parse(scenario.payload()).gpus[1].architecture, u"unknown"_s);
}

} // namespace morvane
