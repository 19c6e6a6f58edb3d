#include "attestation/evidence/ListSignature.h"

#include "attestation/evidence/OpenSSLHandles.h"
#include "attestation/evidence/VeniceSignedMeasurementList.h"
#include "utils/bytes/Base64.h"
#include "utils/text/Text.h"

#include <algorithm>

namespace morvane {

namespace {

using OpenSSL::bytesOf;
using Refusal = VeniceSignedMeasurementList::Refusal;

QByteArray signatureIn(QByteArrayView file)
{
    const std::optional<QString> text = Text::fromUtf8(file);
    const auto signature = text ? Base64::decode(Text::trimmed(*text)) : std::nullopt;
    if (!signature || signature->size() != ListSignature::signatureSize)
        throw Refusal(Refusal::Plain::signatureMalformed);
    return *signature;
}

bool holds(QByteArrayView list, const QByteArray &signature, const QByteArray &key)
{
    const OpenSSL::Key loaded(EVP_PKEY_new_raw_public_key(
        EVP_PKEY_ED25519, nullptr, bytesOf(QByteArrayView(key)), static_cast<std::size_t>(key.size())));
    const OpenSSL::Digesting context(EVP_MD_CTX_new());
    return loaded && context &&
           EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, loaded.get()) == 1 &&
           EVP_DigestVerify(context.get(), bytesOf(QByteArrayView(signature)),
                            static_cast<std::size_t>(signature.size()), bytesOf(list),
                            static_cast<std::size_t>(list.size())) == 1;
}

} // namespace

QByteArray ListSignature::signingKey(QByteArrayView list, QByteArrayView signatureFile,
                                     const std::vector<QByteArray> &keys)
{
    const QByteArray signature = signatureIn(signatureFile);
    const auto key = std::find_if(keys.begin(), keys.end(),
                                  [&](const QByteArray &one) { return holds(list, signature, one); });
    if (key == keys.end())
        throw Refusal(Refusal::Plain::signatureInvalid);
    return *key;
}

} // namespace morvane
