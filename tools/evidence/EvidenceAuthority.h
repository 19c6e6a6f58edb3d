#pragma once

#include "attestation/evidence/EvidencePins.h"
#include "evidence/CertificateRecipe.h"
#include "evidence/ListKey.h"

namespace morvane {

// The two makers and the signer of lists, played by keys of our own: what vouches for the evidence of a
// Scenario.
struct EvidenceAuthority {
    ChainRecipe intelChain;          // leaf first, on P-256
    ChainRecipe nvidiaChain;         // leaf first, on P-384
    QByteArray quotingEnclaveSigner; // 32 bytes
    ListKey listKey;

    // One that dies with this process.
    [[nodiscard]] static const EvidenceAuthority &ofThisProcess();

    // A new one. `name` begins each certificate's name.
    [[nodiscard]] static EvidenceAuthority mint(const QString &name, const QDateTime &from,
                                                const QDateTime &to);

    // One kept in a folder: both chains and the private keys of their leaves, the key that signs lists and
    // the signer of the quoting enclave. The keys of the roots are not kept, so nothing else can be issued
    // under them. Both throw a runtime_error that names the file.
    [[nodiscard]] static EvidenceAuthority read(const QString &folder);
    void write(const QString &folder) const;

    [[nodiscard]] EvidencePins pins() const;

    // The DER of a chain. Equal recipes give the same bytes, so that a pin can name a root, and devices of
    // one server share their upper certificates as in the field.
    [[nodiscard]] static std::vector<QByteArray> certificatesOf(const ChainRecipe &chain);
};

} // namespace morvane
