#include "attestation/evidence/EvidencePins.h"

#include "deployment/DeploymentValues.h"

namespace morvane {

EvidencePins EvidencePins::ofThisBuild()
{
    return {.intelRootSHA256 = QString(DeploymentValues::intelRootSHA256),
            .quotingEnclaveSigner = QString(DeploymentValues::quotingEnclaveSigner),
            .nvidiaRootSHA256 = QString(DeploymentValues::nvidiaRootSHA256)};
}

} // namespace morvane
