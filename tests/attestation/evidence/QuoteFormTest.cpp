// What a quote's signatures leave open, its form doesn't: no byte of an exported quote can change unseen.

#include "attestation/evidence/QuoteForm.h"
#include "attestation/evidence/TDXQuoteVerifier.h"
#include "evidence/TestAuthority.h"

#include <gtest/gtest.h>

namespace morvane {

namespace {

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

} // namespace

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

} // namespace morvane
