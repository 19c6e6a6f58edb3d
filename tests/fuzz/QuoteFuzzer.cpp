// Any bytes as a quote: parsed and judged, under a pin that its own root meets so that the certificates are
// looked at.

#include "fuzz/Fuzz.h"

#include "attestation/evidence/Digest.h"
#include "attestation/evidence/TDXQuoteVerifier.h"
#include "utils/text/UniversalTime.h"

void morvane::fuzz(QByteArrayView input)
{
    static const QDateTime date = UniversalTime::at(QDate(2026, 9, 1));
    try {
        const TDXQuote quote = TDXQuote::parse(input);
        require(quote.signedBody == input.first(632) && !quote.certificateChain.empty());
        if (!isJudged(input))
            return;
        EvidencePins pins = EvidencePins::ofThisBuild();
        pins.intelRootSHA256 = Digest::sha256Hex(quote.certificateChain.back());
        TDXQuoteVerifier::Inquiry inquiry{quote, pins, date, std::nullopt};
        for (const auto &check : TDXQuoteVerifier::checks()) {
            try {
                check.require(inquiry);
            } catch (const TDXQuoteVerifier::Failure &failure) {
                static_cast<void>(failure.caseText());
            }
        }
    } catch (const TDXQuote::ParseError &error) {
        static_cast<void>(error.caseText());
    }
}
