#include "attestation/evidence/QuoteForm.h"
#include "attestation/evidence/TDXQuoteVerifier.h"
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

TEST(TDXQuoteTest, FieldsLandWhereTheyBelongAndARegisterOfAnotherFormCarriesNoHash)
{
    const QuoteRecipe recipe;
    TDXQuote::TDReport report = TDXQuote::parse(recipe.build()).report;
    EXPECT_EQ(report, recipe.report);
    const QByteArray good = '\x01' + QByteArray(32, 'h') + QByteArray(15, '\0');
    for (const QByteArray &bad :
         {good.chopped(1), good + '\0', '\x02' + good.mid(1), good.first(47) + '\x01'}) {
        report.mrconfigid = bad;
        EXPECT_EQ(report.composeHash(), std::nullopt);
    }
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

// What a quote's signatures leave open, its form doesn't: no byte of an exported quote can change unseen.

enum class Outcome { Holds, Stray, Fails };

Outcome outcomeOf(const QByteArray &bytes, const Scenario &scenario)
{
    try {
        const TDXQuote quote = TDXQuote::parse(bytes);
        if (QuoteForm::firstStrayByte(bytes, quote))
            return Outcome::Stray;
        TDXQuoteVerifier::verify(quote, scenario.pins, scenario.date);
        return Outcome::Holds;
    } catch (const TDXQuote::ParseError &) {
        return Outcome::Fails;
    } catch (const TDXQuoteVerifier::Failure &) {
        return Outcome::Fails;
    }
}

TEST(QuoteFormTest, NoByteChangesUnseen)
{
    const Scenario scenario;
    const QByteArray good = scenario.quoteBytes();
    ASSERT_EQ(outcomeOf(good, scenario), Outcome::Holds);
    // Every byte at a length or at the end of a text, else a sample: signatures take their time.
    for (qsizetype at = 0; at < good.size();
         at += (at >= 1216 && at < 1264) || at > good.size() - 32 ? 1 : 23) {
        QByteArray bent = good;
        bent[at] = static_cast<char>(bent[at] ^ 1);
        EXPECT_NE(outcomeOf(bent, scenario), Outcome::Holds) << at;
    }
}

TEST(QuoteFormTest, OneFormOfMany)
{
    const auto outcomeWith = [](const auto &onPEM, const QByteArray &behind) {
        Scenario scenario;
        scenario.quote.onPEM = onPEM;
        scenario.quote.onQuote = [&behind](QByteArray &quote) { quote += behind; };
        return outcomeOf(scenario.quoteBytes(), scenario);
    };
    const auto asItIs = [](QByteArray &) {};
    EXPECT_EQ(outcomeWith([](QByteArray &pem) { pem += '\0'; }, QByteArray(70, '\0')), Outcome::Holds);
    EXPECT_EQ(outcomeWith(asItIs, QByteArray(70, '\0') + '1'), Outcome::Stray);
    EXPECT_EQ(outcomeWith(asItIs, "note"), Outcome::Stray);
    EXPECT_EQ(outcomeWith([](QByteArray &pem) { pem.replace('\n', "\r\n"); }, {}), Outcome::Stray);
    EXPECT_EQ(outcomeWith([](QByteArray &pem) { pem.prepend("note\n"); }, {}), Outcome::Stray);
    EXPECT_EQ(outcomeWith([](QByteArray &pem) { pem += QByteArray(2, '\0'); }, {}), Outcome::Stray);
}

} // namespace

} // namespace morvane
