#include "attestation/evidence/Digest.h"

#include "attestation/evidence/OpenSSLHandles.h"
#include "utils/bytes/Hex.h"

#include <stdexcept>

namespace morvane {

namespace {

QByteArray digest(const EVP_MD *algorithm, Digest::Pieces pieces)
{
    // A context costs more than hashing a short text, so a thread keeps one.
    thread_local const OpenSSL::Digesting context(EVP_MD_CTX_new());
    QByteArray result(EVP_MD_get_size(algorithm), Qt::Uninitialized);
    bool good = EVP_DigestInit_ex2(context.get(), algorithm, nullptr) == 1;
    for (const QByteArrayView piece : pieces) {
        good = good &&
               EVP_DigestUpdate(context.get(), piece.data(), static_cast<std::size_t>(piece.size())) == 1;
    }
    good = good && EVP_DigestFinal_ex(context.get(), OpenSSL::bytesOf(result), nullptr) == 1;
    if (!good)
        throw std::runtime_error("hashing failed");
    return result;
}

} // namespace

QByteArray Digest::sha256(Pieces pieces)
{
    return digest(OpenSSL::sha256(), pieces);
}

QByteArray Digest::sha384(Pieces pieces)
{
    return digest(OpenSSL::sha384(), pieces);
}

QString Digest::sha256Hex(QByteArrayView bytes)
{
    return Hex::encode(sha256({bytes}));
}

} // namespace morvane
