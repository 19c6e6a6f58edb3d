// Any bytes as PEM text; what comes out is judged as a chain under its own last certificate.

#include "fuzz/Judged.h"

#include "attestation/evidence/Digest.h"
#include "attestation/evidence/PEMCertificates.h"

#include <cstdint>

namespace morvane {

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const QDateTime date(QDate(2026, 9, 1), QTime(0, 0), Qt::UTC);
    const auto chain = PEMCertificates::blocks(QByteArrayView(data, static_cast<qsizetype>(size)));
    if (chain.empty() || !isJudged(QByteArrayView(data, static_cast<qsizetype>(size))))
        return 0;
    try {
        PEMCertificates::verifyChain(chain, Digest::sha256Hex(chain.back()), date);
    } catch (const PEMCertificates::ChainError &) {
    }
    try {
        static_cast<void>(PEMCertificates::leafPublicKey(chain.front()));
    } catch (const PEMCertificates::ChainError &) {
    }
    return 0;
}

} // namespace morvane
