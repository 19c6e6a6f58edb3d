// Any text as GPU evidence, judged by its own nonce and under its own root.

#include "fuzz/Judged.h"

#include "attestation/evidence/Digest.h"
#include "attestation/evidence/NvidiaGPUEvidence.h"

#include <cstdint>
#include <cstdlib>

namespace morvane {

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const QDateTime date(QDate(2026, 9, 1), QTime(0, 0), Qt::UTC);
    const QString payload =
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    try {
        const auto evidence = NvidiaGPUEvidence::parse(payload);
        if (evidence.gpus.empty())
            std::abort();
        if (!isJudged(QByteArrayView(data, static_cast<qsizetype>(size))))
            return 0;
        EvidencePins pins = EvidencePins::ofThisBuild();
        const auto &chain = evidence.gpus.front().certificateChain;
        if (!chain.empty())
            pins.nvidiaRootSHA256 = Digest::sha256Hex(chain.back());
        evidence.verify(evidence.nonce, pins, date);
    } catch (const NvidiaGPUEvidence::Failure &failure) {
        static_cast<void>(failure.caseText());
    }
    return 0;
}

} // namespace morvane
