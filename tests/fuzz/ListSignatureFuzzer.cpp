// Any bytes as the signature file of a list: it holds under the key that made it or not at all.

#include "fuzz/Fuzz.h"

#include "attestation/evidence/ListSignature.h"
#include "attestation/evidence/VeniceSignedMeasurementList.h"

namespace {

using namespace morvane;

// The key that signed the seeds; nobody keeps its private half.
const QByteArray &seedKey()
{
    static const QByteArray key =
        QByteArray::fromHex("6d1354f74498a5ebc5603806fd61821c532571a745c88963a20721cead0ced00");
    return key;
}

bool isSigned(QByteArrayView file)
{
    try {
        return ListSignature::signingKey("a list", file, {QByteArray(32, '\x01'), seedKey()}) == seedKey();
    } catch (const VeniceSignedMeasurementList::Refusal &refusal) {
        static_cast<void>(refusal.caseText());
        return false;
    }
}

} // namespace

void morvane::fuzz(QByteArrayView input)
{
    const bool holds = isSigned(input);
    require(!holds || isSigned(" \n" + input.toByteArray() + "\t\n"));
    // One byte of the list otherwise, and no signature holds.
    try {
        static_cast<void>(ListSignature::signingKey("a lisu", input, {seedKey()}));
        require(false);
    } catch (const VeniceSignedMeasurementList::Refusal &) {
    }
}
