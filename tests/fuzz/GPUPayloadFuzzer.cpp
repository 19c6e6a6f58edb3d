// Any text as GPU evidence, judged by its own nonce and under its own root.

#include "fuzz/Fuzz.h"

#include "attestation/evidence/Digest.h"
#include "attestation/evidence/NvidiaGPUEvidence.h"
#include "utils/text/UniversalTime.h"

void morvane::fuzz(QByteArrayView input)
{
    static const QDateTime date = UniversalTime::at(QDate(2026, 9, 1));
    try {
        const auto evidence = NvidiaGPUEvidence::parse(QString::fromUtf8(input));
        require(!evidence.gpus.empty());
        if (!isJudged(input))
            return;
        EvidencePins pins = EvidencePins::ofThisBuild();
        const auto &chain = evidence.gpus.front().certificateChain;
        if (!chain.empty())
            pins.nvidiaRootSHA256 = Digest::sha256Hex(chain.back());
        evidence.verify(evidence.nonce, pins, date);
    } catch (const NvidiaGPUEvidence::Failure &failure) {
        static_cast<void>(failure.caseText());
    }
}
