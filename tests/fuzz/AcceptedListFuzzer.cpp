// Any bytes as a list of accepted servers, travelling or built in.

#include "attestation/evidence/BundledAllowlist.h"
#include "attestation/evidence/VeniceSignedMeasurementList.h"

#include <cstdint>
#include <cstdlib>

namespace morvane {

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArrayView json(data, static_cast<qsizetype>(size));
    const auto bundled = BundledAllowlist::read(json);
    try {
        const auto list = VeniceSignedMeasurementList::read(json, 1);
        for (const auto &entry : list.entries) {
            if (!entry.stack.requiresGPUEvidence || entry.stack.configurations.size() != 1)
                std::abort();
            static_cast<void>(
                VeniceBootEvent::replay(entry.stack.bootEvents, QByteArray(32, 'c'), QByteArray(20, 'i')));
        }
        static_cast<void>(list.allowlistAt(list.issuedAt, bundled));
    } catch (const VeniceSignedMeasurementList::Refusal &refusal) {
        static_cast<void>(refusal.caseText());
    }
    return 0;
}

} // namespace morvane
