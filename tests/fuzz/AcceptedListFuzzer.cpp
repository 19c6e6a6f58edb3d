// Any bytes as a list of accepted servers, travelling or built in.

#include "fuzz/Fuzz.h"

#include "attestation/evidence/BundledAllowlist.h"
#include "attestation/evidence/VeniceSignedMeasurementList.h"

void morvane::fuzz(QByteArrayView input)
{
    const auto bundled = BundledAllowlist::read(input);
    try {
        const auto list = VeniceSignedMeasurementList::read(input, 1);
        for (const auto &entry : list.entries) {
            require(entry.stack.requiresGPUEvidence && entry.stack.configurations.size() == 1);
            static_cast<void>(
                VeniceBootEvent::replay(entry.stack.bootEvents, QByteArray(32, 'c'), QByteArray(20, 'i')));
        }
        static_cast<void>(list.allowlistAt(list.issuedAt, bundled));
    } catch (const VeniceSignedMeasurementList::Refusal &refusal) {
        static_cast<void>(refusal.caseText());
    }
}
