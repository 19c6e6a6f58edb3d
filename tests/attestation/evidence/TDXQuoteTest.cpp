#include "support/evidence/TestAuthority.h"

#include <QtEndian>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

struct Field {
    const char *name;
    qsizetype size;
};

// The field of a block in which its first `length` bytes end.
QString fieldAt(const std::vector<Field> &fields, qsizetype length)
{
    for (const Field &field : fields) {
        if (length < field.size)
            return QString::fromLatin1(field.name);
        length -= field.size;
    }
    return {};
}

QString parseFailure(QByteArrayView bytes)
{
    try {
        (void)TDXQuote::parse(bytes);
        return u"ok"_s;
    } catch (const TDXQuote::ParseError &error) {
        return error.caseText();
    }
}

QString tooShort(const QString &field)
{
    return u"tooShort(\"%1\")"_s.arg(field);
}

QByteArray withLength(QByteArrayView block)
{
    QByteArray length(4, '\0');
    qToLittleEndian(static_cast<std::uint32_t>(block.size()), length.data());
    return length + block.toByteArray();
}

constexpr qsizetype bodySize = 632;
constexpr qsizetype signatureDataStart = bodySize + 4;
constexpr qsizetype certificationDataStart = signatureDataStart + 134;

} // namespace

TEST(TDXQuoteTest, FieldsLandWhereTheyBelong)
{
    const QuoteRecipe recipe;
    const QByteArray bytes = recipe.build();
    const TDXQuote quote = TDXQuote::parse(bytes);
    EXPECT_EQ(quote.header, (TDXQuote::Header{4, 2, 129}));
    EXPECT_EQ(quote.report, recipe.report);
    EXPECT_EQ(quote.signedBody, bytes.first(bodySize));
    EXPECT_EQ(quote.signature, bytes.mid(signatureDataStart, 64));
    EXPECT_EQ(quote.attestationKey, recipe.attestationKey.publicKey());
    EXPECT_EQ(quote.qeReport, bytes.mid(certificationDataStart, 384));
    EXPECT_EQ(quote.qeReportSignature, bytes.mid(certificationDataStart + 384, 64));
    EXPECT_EQ(quote.qeAuthenticationData, recipe.qeAuthenticationData);
    EXPECT_EQ(quote.certificateChain.size(), 3U);
}

TEST(TDXQuoteTest, EveryTruncationNamesTheFieldItEndsIn)
{
    const QByteArray quote = QuoteRecipe().build();
    const std::vector<Field> fields{{"version", 2},
                                    {"attestation key type", 2},
                                    {"TEE type", 4},
                                    {"header tail", 40},
                                    {"tee_tcb_svn", 16},
                                    {"mrseam", 48},
                                    {"mrsignerseam", 48},
                                    {"seamattributes", 8},
                                    {"tdattributes", 8},
                                    {"xfam", 8},
                                    {"mrtd", 48},
                                    {"mrconfigid", 48},
                                    {"mrowner", 48},
                                    {"mrownerconfig", 48},
                                    {"rtmr0", 48},
                                    {"rtmr1", 48},
                                    {"rtmr2", 48},
                                    {"rtmr3", 48},
                                    {"reportdata", 64},
                                    {"signature data length", 4},
                                    {"signature data", quote.size()}};
    for (qsizetype length = 0; length < quote.size(); ++length)
        ASSERT_EQ(parseFailure(QByteArrayView(quote).first(length)), tooShort(fieldAt(fields, length)))
            << length;
    EXPECT_EQ(parseFailure(quote), u"ok"_s);
}

// The blocks inside, cut with their lengths written to fit, so that only what lies within is short.
TEST(TDXQuoteTest, EveryTruncationOfANestedBlockNamesItsField)
{
    const QByteArray quote = QuoteRecipe().build();
    const QByteArrayView body = QByteArrayView(quote).first(bodySize);
    const QByteArrayView signatureData = QByteArrayView(quote).sliced(signatureDataStart);
    const std::vector<Field> signatureFields{{"quote signature", 64},
                                             {"attestation key", 64},
                                             {"certification data type", 2},
                                             {"certification data length", 4},
                                             {"certification data", quote.size()}};
    for (qsizetype length = 0; length < signatureData.size(); ++length) {
        const QByteArray cut = body.toByteArray() + withLength(signatureData.first(length)) + "behind";
        ASSERT_EQ(parseFailure(cut), tooShort(fieldAt(signatureFields, length))) << length;
    }

    const QByteArrayView certificationData = QByteArrayView(quote).sliced(certificationDataStart);
    const std::vector<Field> certificationFields{
        {"QE report", 384},   {"QE report signature", 64}, {"QE auth data length", 2}, {"QE auth data", 6},
        {"PCK data type", 2}, {"PCK data length", 4},      {"PCK chain", quote.size()}};
    for (qsizetype length = 0; length < certificationData.size(); ++length) {
        const QByteArray cut =
            body.toByteArray() + withLength(signatureData.first(130).toByteArray() +
                                            withLength(certificationData.first(length)) + "behind");
        ASSERT_EQ(parseFailure(cut), tooShort(fieldAt(certificationFields, length))) << length;
    }
}

TEST(TDXQuoteTest, ComposeHash)
{
    const QByteArray good = QByteArray("\x01") + QByteArray(32, 'h') + QByteArray(15, '\0');
    TDXQuote::TDReport report;
    report.mrconfigid = good;
    EXPECT_EQ(report.composeHash(), QByteArray(32, 'h'));
    for (const qsizetype at : {0, 33, 40, 47}) {
        report.mrconfigid = good;
        report.mrconfigid[at] = 2;
        EXPECT_EQ(report.composeHash(), std::nullopt) << at;
    }
    for (const QByteArray &size : {QByteArray(), good.chopped(1), good + '\0'}) {
        report.mrconfigid = size;
        EXPECT_EQ(report.composeHash(), std::nullopt);
    }
}

} // namespace morvane
