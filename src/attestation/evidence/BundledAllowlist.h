#pragma once

#include "attestation/evidence/VeniceMeasurementAllowlist.h"

namespace morvane {

// The accepted servers built into the application: the floor when no signed list is valid.
namespace BundledAllowlist {

// Those compiled into this build. May accept none: see deployment/README.md.
[[nodiscard]] VeniceMeasurementAllowlist ofThisBuild();

// From the deployment's JSON array of stacks. A stack counts only when it is complete, so a value that is not
// known can only make it accept nothing.
[[nodiscard]] VeniceMeasurementAllowlist read(QByteArrayView json);

} // namespace BundledAllowlist

} // namespace morvane
