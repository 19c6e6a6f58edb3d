// Any bytes as a quote: parsed and judged, under a pin that its own root meets so that the certificates are
// looked at.

#include "fuzz/Judged.h"

#include "attestation/evidence/Digest.h"
#include "attestation/evidence/TDXQuoteVerifier.h"

#include <cstdint>
#include <cstdlib>

namespace morvane {

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const QDateTime date(QDate(2026, 9, 1), QTime(0, 0), Qt::UTC);
    const QByteArrayView bytes(data, static_cast<qsizetype>(size));
    try {
        const TDXQuote quote = TDXQuote::parse(bytes);
        if (quote.signedBody != bytes.first(632) || quote.certificateChain.empty())
            std::abort();
        if (!isJudged(bytes))
            return 0;
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
    return 0;
}

} // namespace morvane
