// Any bytes as a server's answer. The question is taken from the answer itself, so that the checks reach far.

#include "fuzz/Fuzz.h"

#include "attestation/evidence/Digest.h"
#include "attestation/evidence/VeniceAttestationVerifier.h"
#include "utils/bytes/Hex.h"

namespace morvane {

namespace {

// Accepts the image that the quote shows, with any configuration that is a host label and nothing else.
VeniceMeasurementAllowlist accepting(const QString &model, const TDXQuote::TDReport &report)
{
    const QString ofNothing = Digest::sha256Hex({});
    VeniceMeasurementAllowlist list;
    list.stacksByModel[model] = {
        {.mrtd = Hex::encode(report.mrtd),
         .rtmr0 = Hex::encode(report.rtmr0),
         .rtmr1 = Hex::encode(report.rtmr1),
         .rtmr2 = Hex::encode(report.rtmr2),
         .configurations = {{.prefixSHA256 = ofNothing, .suffixSHA256 = ofNothing}},
         .bootEvents = {{QStringLiteral("compose-hash"), {}}, {QStringLiteral("instance-id"), {}}}}};
    return list;
}

} // namespace

void fuzz(QByteArrayView input)
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
                          .date = QDateTime(QDate(2026, 9, 1), QTime(0, 0), Qt::UTC)};
        if (document.intelQuote) {
            const TDXQuote quote = TDXQuote::parse(*document.intelQuote);
            question.pins.intelRootSHA256 = Digest::sha256Hex(quote.certificateChain.back());
            question.pins.quotingEnclaveSigner = Hex::encode(QByteArrayView(quote.qeReport).sliced(128, 32));
            question.allowlist = accepting(document.model, quote.report);
        }
        if (isJudged(input))
            static_cast<void>(verify(question));
    } catch (const VeniceAttestationDocument::DecodeError &) {
    } catch (const TDXQuote::ParseError &) {
    } catch (const Failure &failure) {
        static_cast<void>(failure.caseText());
    }
}

} // namespace morvane
