#pragma once

#include <QByteArray>

#include <vector>

namespace morvane {

// The signature file of a list of accepted servers: base64 of an Ed25519 signature (RFC 8032) over the list
// file's exact bytes. Any thread.
namespace ListSignature {

inline constexpr qsizetype keySize = 32;
inline constexpr qsizetype signatureSize = 64;

// The first of `keys` that the signature holds under. White space around the file's text doesn't count.
// Throws VeniceSignedMeasurementList::Refusal: signatureMalformed, signatureInvalid.
[[nodiscard]] QByteArray signingKey(QByteArrayView list, QByteArrayView signatureFile,
                                    const std::vector<QByteArray> &keys);

} // namespace ListSignature

} // namespace morvane
