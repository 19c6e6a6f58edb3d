#include "attestation/evidence/NvidiaGPUEvidence.h"
#include "attestation/evidence/QuoteForm.h"
#include "attestation/evidence/TDXQuoteVerifier.h"
#include "evidence/TestAuthority.h"

#include <QFile>

#include <gtest/gtest.h>

#include <functional>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

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

// Evidence that machines in the field produced, under the real pins. The files are not part of the
// repository: they lie beside it in shared/data/genuine, or where MORVANE_GENUINE_DATA says. Without them
// these tests are skipped.
class GenuineEvidenceTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (!QFile::exists(path(u"tdx_quote.bin"_s)))
            GTEST_SKIP() << "no genuine evidence on this machine";
    }

    static QByteArray contents(const QString &name)
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

    // "ok", or the failure with which the evidence is judged at a date.
    template <typename Failure>
    static QString verdict(const char *iso, const std::function<void(const QDateTime &)> &verify)
    {
        try {
            verify(QDateTime::fromString(QString::fromLatin1(iso), Qt::ISODate));
            return u"ok"_s;
        } catch (const Failure &failure) {
            return failure.caseText();
        }
    }

private:
    static QString path(const QString &name)
    {
        const QString folder = qEnvironmentVariable(
            "MORVANE_GENUINE_DATA", QStringLiteral(MORVANE_SOURCE_DIR "/../shared/data/genuine"));
        return folder + u'/' + name;
    }
};

TEST_F(GenuineEvidenceTest, TheQuoteHoldsWhileItsCertificatesDo)
{
    const QByteArray bytes = contents(u"tdx_quote.bin"_s);
    const TDXQuote quote = TDXQuote::parse(bytes);
    EXPECT_EQ(quote.certificateChain.size(), 3U);
    EXPECT_EQ(QuoteForm::firstStrayByte(bytes, quote), std::nullopt);
    const auto verdictAt = [&quote](const char *iso) {
        return verdict<TDXQuoteVerifier::Failure>(iso, [&quote](const QDateTime &date) {
            TDXQuoteVerifier::verify(quote, EvidencePins::ofThisBuild(), date);
        });
    };
    EXPECT_EQ(verdictAt("2025-02-06T23:25:50Z"), u"certificateChain(\"certificate is not yet valid\")"_s);
    EXPECT_EQ(verdictAt("2025-02-06T23:25:51Z"), u"ok"_s);
    EXPECT_EQ(verdictAt("2032-02-06T23:25:51Z"), u"ok"_s);
    EXPECT_EQ(verdictAt("2032-02-06T23:25:52Z"), u"certificateChain(\"certificate has expired\")"_s);
}

TEST_F(GenuineEvidenceTest, TheGraphicsChipHolds)
{
    auto evidence = NvidiaGPUEvidence::parse(QString::fromUtf8(contents(u"nvidia_payload.json"_s)));
    const auto nonce =
        QByteArray::fromHex("e97b23a1718095a0e9e35edca810768c70a6a5a389b705e753b197912bc11576");
    const auto verdictAt = [&](const char *iso) {
        return verdict<NvidiaGPUEvidence::Failure>(
            iso, [&](const QDateTime &date) { evidence.verify(nonce, EvidencePins::ofThisBuild(), date); });
    };
    ASSERT_EQ(evidence.gpus.size(), 1U);
    EXPECT_EQ(evidence.gpus[0].certificateChain.size(), 5U);
    EXPECT_EQ(verdictAt("2022-02-28T23:59:59Z"), u"certificateChain(0, \"certificate is not yet valid\")"_s);
    EXPECT_EQ(verdictAt("9999-12-31T23:59:59Z"), u"ok"_s);
    evidence.gpus[0].report[500] = static_cast<char>(evidence.gpus[0].report[500] ^ 1);
    EXPECT_EQ(verdictAt("2026-09-01T00:00:00Z"), u"signatureInvalid(0)"_s);
}

} // namespace

} // namespace morvane
