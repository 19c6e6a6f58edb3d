#include "evidence/TestAuthority.h"
#include "support/TestData.h"

#include <QtEndian>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QByteArray parseFailure(QByteArrayView bytes)
{
    try {
        (void)TDXQuote::parse(bytes);
        return "ok";
    } catch (const TDXQuote::ParseError &error) {
        return error.caseText().toUtf8();
    }
}

// What the block is refused for when it is cut, and from which length on.
QByteArray truncations(const QByteArray &block, qsizetype size,
                       const std::function<QByteArray(qsizetype)> &cut)
{
    QByteArray text = block + '\n';
    QByteArray last;
    for (qsizetype length = 0; length < size; ++length) {
        const QByteArray failure = parseFailure(cut(length));
        if (failure != last)
            text += "  " + QByteArray::number(length) + ' ' + failure + '\n';
        last = failure;
    }
    return text;
}

QByteArray withLength(const QByteArray &block)
{
    QByteArray length(4, '\0');
    qToLittleEndian(static_cast<std::uint32_t>(block.size()), length.data());
    return length + block;
}

constexpr qsizetype signatureDataStart = 632 + 4;
constexpr qsizetype certificationDataStart = signatureDataStart + 134;

} // namespace

TEST(TDXQuoteTest, FieldsLandWhereTheyBelong)
{
    const QuoteRecipe recipe;
    const QByteArray bytes = recipe.build();
    const TDXQuote quote = TDXQuote::parse(bytes);
    EXPECT_EQ(quote.header, (TDXQuote::Header{4, 2, 129}));
    EXPECT_EQ(quote.report, recipe.report);
    EXPECT_EQ(quote.signedBody, bytes.first(632));
    EXPECT_EQ(quote.signature, bytes.mid(signatureDataStart, 64));
    EXPECT_EQ(quote.attestationKey, recipe.attestationKey.publicKey());
    EXPECT_EQ(quote.qeReport, bytes.mid(certificationDataStart, 384));
    EXPECT_EQ(quote.qeReportSignature, bytes.mid(certificationDataStart + 384, 64));
    EXPECT_EQ(quote.qeAuthenticationData, recipe.qeAuthenticationData);
    EXPECT_EQ(quote.certificateChain.size(), 3U);
}

// The blocks inside are cut with their lengths written to fit, so that only what lies within is short.
TEST(TDXQuoteTest, EveryTruncationNamesTheFieldItEndsIn)
{
    const QByteArray quote = QuoteRecipe().build();
    const QByteArray body = quote.first(632);
    const QByteArray inside = quote.sliced(signatureDataStart);
    const QByteArray innermost = quote.sliced(certificationDataStart);
    const QByteArray text =
        truncations("quote", quote.size(), [&](qsizetype length) { return quote.first(length); }) +
        truncations("signature data", inside.size(),
                    [&](qsizetype length) { return body + withLength(inside.first(length)) + "behind"; }) +
        truncations("certification data", innermost.size(), [&](qsizetype length) {
            return body + withLength(inside.first(130) + withLength(innermost.first(length)) + "behind");
        });
    EXPECT_EQ(text.toStdString(), TestData::text("attestation/truncations.txt"));
}

TEST(TDXQuoteTest, ComposeHash)
{
    const QByteArray good = QByteArray("\x01") + QByteArray(32, 'h') + QByteArray(15, '\0');
    TDXQuote::TDReport report;
    report.mrconfigid = good;
    EXPECT_EQ(report.composeHash(), QByteArray(32, 'h'));
    for (const QByteArray &bad :
         {good.chopped(1), good + '\0', '\x02' + good.mid(1), good.first(47) + '\x01'}) {
        report.mrconfigid = bad;
        EXPECT_EQ(report.composeHash(), std::nullopt);
    }
}

} // namespace morvane
