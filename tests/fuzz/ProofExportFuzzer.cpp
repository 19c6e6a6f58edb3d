// Any bytes as an exported proof ledger: read, and judged under pins that its own quotes meet, so that the
// checks behind the hardware's are looked at.

#include "fuzz/Fuzz.h"

#include "attestation/evidence/Digest.h"
#include "attestation/evidence/ExportedProof.h"
#include "utils/bytes/Hex.h"

namespace {

using namespace morvane;

EvidencePins pinsMetBy(const QByteArray &bytes)
{
    EvidencePins pins;
    try {
        const TDXQuote quote = TDXQuote::parse(bytes);
        pins.intelRootSHA256 = Digest::sha256Hex(quote.certificateChain.back());
        pins.quotingEnclaveSigner = Hex::encode(QByteArrayView(quote.qeReport).sliced(128, 32));
    } catch (const TDXQuote::ParseError &) {
    }
    return pins;
}

// Whether the check passed.
bool passes(const Check<ExportedProof::Inquiry> &check, ExportedProof::Inquiry &inquiry)
{
    try {
        check.require(inquiry);
        return true;
    } catch (const ExportedProof::Failure &failure) {
        static_cast<void>(failure.caseText());
    } catch (const TDXQuote::ParseError &) {
    } catch (const TDXQuoteVerifier::Failure &) {
    }
    return false;
}

void judge(const ProofExportFile::Turn &turn)
{
    const EvidencePins pins = turn.proof ? pinsMetBy(turn.proof->quote) : EvidencePins();
    ExportedProof::Inquiry inquiry{turn, pins, {}};
    for (const auto &check : ExportedProof::rowChecks()) {
        if (!passes(check, inquiry))
            return;
    }
    if (!turn.proof)
        return;
    for (const auto &check : ExportedProof::proofChecks()) {
        if (!passes(check, inquiry))
            return;
    }
    require(inquiry.quote.report.mrtd == turn.proof->mrtd);
}

} // namespace

void morvane::fuzz(QByteArrayView input)
{
    try {
        const ProofExportFile file = ProofExportFile::read(input);
        require(file.exported.isValid() && file.turns.size() <= ProofExportFile::turnLimit);
        for (const QJsonObject &row : file.turns) {
            try {
                const auto turn = ProofExportFile::Turn::read(row);
                require(turn.ranAt.isValid() && (!turn.proof || turn.proof->modelPublicKey.size() == 65));
                if (isJudged(input))
                    judge(turn);
            } catch (const ProofExportFile::ReadError &error) {
                static_cast<void>(error.caseText());
            }
        }
    } catch (const ProofExportFile::ReadError &error) {
        static_cast<void>(error.caseText());
    }
}
