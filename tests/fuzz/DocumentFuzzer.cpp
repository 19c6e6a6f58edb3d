// Any bytes as a server's answer. The question is taken from the answer itself, so that the checks reach far.

#include "fuzz/Fuzz.h"

#include "attestation/evidence/Digest.h"
#include "attestation/evidence/VeniceAttestationVerifier.h"
#include "utils/bytes/Hex.h"
#include "utils/text/UniversalTime.h"

using namespace Qt::StringLiterals;

void morvane::fuzz(QByteArrayView input)
{
    using namespace VeniceAttestationVerifier;
    try {
        const auto document = VeniceAttestationDocument::decode(input);
        require(!document.signingPublicKey || addressOf(*document.signingPublicKey));
        Question question{.document = document,
                          .model = document.model,
                          .nonce = document.echoedNonce.value_or(QByteArray()),
                          .allowlist = {},
                          .pins = EvidencePins::ofThisBuild(),
                          .date = UniversalTime::at(QDate(2026, 9, 1))};
        if (document.intelQuote) {
            const TDXQuote quote = TDXQuote::parse(*document.intelQuote);
            question.pins.intelRootSHA256 = Digest::sha256Hex(quote.certificateChain.back());
            question.pins.quotingEnclaveSigner = Hex::encode(QByteArrayView(quote.qeReport).sliced(128, 32));
            // Accepts the image that the quote shows, with any configuration that is a host label and nothing
            // else.
            const QString ofNothing = Digest::sha256Hex({});
            question.allowlist.stacksByModel[document.model] = {
                {.mrtd = Hex::encode(quote.report.mrtd),
                 .rtmr0 = Hex::encode(quote.report.rtmr0),
                 .rtmr1 = Hex::encode(quote.report.rtmr1),
                 .rtmr2 = Hex::encode(quote.report.rtmr2),
                 .configurations = {{.prefixSHA256 = ofNothing, .suffixSHA256 = ofNothing}},
                 .bootEvents = {{u"compose-hash"_s, {}}, {u"instance-id"_s, {}}}}};
        }
        if (isJudged(input))
            static_cast<void>(verify(question));
    } catch (const VeniceAttestationDocument::DecodeError &) {
    } catch (const TDXQuote::ParseError &) {
    } catch (const Failure &failure) {
        static_cast<void>(failure.caseText());
    }
}
