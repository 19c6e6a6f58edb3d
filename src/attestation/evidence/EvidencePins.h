#pragma once

#include <QString>

namespace morvane {

// The facts about two makers that the checks take as given, each 32 bytes as lower-case hexadecimal. They are
// values, so a test passes its own.
struct EvidencePins {
    QString intelRootSHA256;      // DER of the root that ends a PCK chain
    QString quotingEnclaveSigner; // MRSIGNER of Intel's TDX quoting enclave
    QString nvidiaRootSHA256;     // DER of the root that ends a GPU's device chain

    // Those compiled into this build.
    [[nodiscard]] static EvidencePins ofThisBuild();
};

} // namespace morvane
