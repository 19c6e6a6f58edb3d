// Any bytes as PEM text; what comes out is judged as a chain under its own last certificate.

#include "fuzz/Fuzz.h"

#include "attestation/evidence/Digest.h"
#include "attestation/evidence/PEMCertificates.h"
#include "utils/text/UniversalTime.h"

void morvane::fuzz(QByteArrayView input)
{
    static const QDateTime date = UniversalTime::at(QDate(2026, 9, 1));
    const auto chain = PEMCertificates::blocks(input);
    if (chain.empty() || !isJudged(input))
        return;
    try {
        PEMCertificates::verifyChain(chain, Digest::sha256Hex(chain.back()), date);
    } catch (const PEMCertificates::ChainError &) {
    }
    try {
        static_cast<void>(PEMCertificates::leafPublicKey(chain.front()));
    } catch (const PEMCertificates::ChainError &) {
    }
}
