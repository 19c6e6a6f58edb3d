#include "attestation/evidence/NvidiaGPUEvidence.h"
#include "attestation/evidence/TDXQuoteVerifier.h"

#include <QFile>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

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

    static QDateTime date(const char *iso)
    {
        return QDateTime::fromString(QString::fromLatin1(iso), Qt::ISODate);
    }

    static QString quoteVerdict(const TDXQuote &quote, const char *iso)
    {
        try {
            TDXQuoteVerifier::verify(quote, EvidencePins::ofThisBuild(), date(iso));
            return u"ok"_s;
        } catch (const TDXQuoteVerifier::Failure &failure) {
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
    const TDXQuote quote = TDXQuote::parse(contents(u"tdx_quote.bin"_s));
    EXPECT_EQ(quote.certificateChain.size(), 3U);
    EXPECT_EQ(quote.report.composeHash(), std::nullopt);
    EXPECT_EQ(quoteVerdict(quote, "2026-09-01T00:00:00Z"), u"ok"_s);
    EXPECT_EQ(quoteVerdict(quote, "2025-02-06T23:25:51Z"), u"ok"_s);
    EXPECT_EQ(quoteVerdict(quote, "2032-02-06T23:25:51Z"), u"ok"_s);
    EXPECT_EQ(quoteVerdict(quote, "2025-02-06T23:25:50Z"),
              u"certificateChain(\"certificate is not yet valid\")"_s);
    EXPECT_EQ(quoteVerdict(quote, "2032-02-06T23:25:52Z"),
              u"certificateChain(\"certificate has expired\")"_s);
}

TEST_F(GenuineEvidenceTest, NoSignedByteMayChange)
{
    const QByteArray bytes = contents(u"tdx_quote.bin"_s);
    for (qsizetype at = 8; at < 632; at += 13) {
        QByteArray changed = bytes;
        changed[at] = static_cast<char>(changed[at] ^ 0x02);
        ASSERT_EQ(quoteVerdict(TDXQuote::parse(changed), "2026-09-01T00:00:00Z"), u"quoteSignatureInvalid"_s)
            << at;
    }
}

TEST_F(GenuineEvidenceTest, TheGraphicsChipHolds)
{
    const auto evidence = NvidiaGPUEvidence::parse(QString::fromUtf8(contents(u"nvidia_payload.json"_s)));
    const auto nonce =
        QByteArray::fromHex("e97b23a1718095a0e9e35edca810768c70a6a5a389b705e753b197912bc11576");
    const auto pins = EvidencePins::ofThisBuild();
    ASSERT_EQ(evidence.gpus.size(), 1U);
    EXPECT_EQ(evidence.gpus[0].architecture, u"HOPPER"_s);
    EXPECT_EQ(evidence.gpus[0].certificateChain.size(), 5U);
    EXPECT_NO_THROW(evidence.verify(nonce, pins, date("2026-09-01T00:00:00Z")));
    EXPECT_NO_THROW(evidence.verify(nonce, pins, date("9999-12-31T23:59:59Z")));
    EXPECT_THROW(evidence.verify(nonce, pins, date("2022-02-28T23:59:59Z")), NvidiaGPUEvidence::Failure);

    auto changed = evidence;
    changed.gpus[0].report[500] = static_cast<char>(changed.gpus[0].report[500] ^ 1);
    try {
        changed.verify(nonce, pins, date("2026-09-01T00:00:00Z"));
        ADD_FAILURE();
    } catch (const NvidiaGPUEvidence::Failure &failure) {
        EXPECT_EQ(failure.caseText(), u"signatureInvalid(0)"_s);
    }
}

} // namespace morvane
