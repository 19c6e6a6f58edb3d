#include "ai/private_cloud/Secp256k1.h"

#include <secp256k1.h>
#include <secp256k1_ecdh.h>

#include <algorithm>
#include <optional>

namespace morvane {

namespace {

using Secp256k1::Failure;

constexpr int draws = 8;

// Made once. Blinding keeps what is computed with a private key from showing in timing or power.
const secp256k1_context *context()
{
    static const secp256k1_context *const made = [] {
        secp256k1_context *const fresh = secp256k1_context_create(SECP256K1_CONTEXT_NONE);
        const SecretBytes seed = SecretBytes::random(32);
        if (secp256k1_context_randomize(fresh, seed.data()) != 1)
            throw Failure(Failure::Reason::noRandomness);
        return fresh;
    }();
    return made;
}

const unsigned char *bytesOf(QByteArrayView view)
{
    return reinterpret_cast<const unsigned char *>(view.data());
}

std::optional<secp256k1_pubkey> parsed(QByteArrayView bytes)
{
    secp256k1_pubkey key;
    if (bytes.size() != Secp256k1::publicKeySize ||
        secp256k1_ec_pubkey_parse(context(), &key, bytesOf(bytes), static_cast<std::size_t>(bytes.size())) !=
            1)
        return std::nullopt;
    return key;
}

bool isPrivateKey(const SecretBytes &bytes)
{
    return bytes.size() == Secp256k1::privateKeySize &&
           secp256k1_ec_seckey_verify(context(), bytes.data()) == 1;
}

SecretBytes drawn(const Secp256k1::RandomSource &random)
{
    try {
        return random(Secp256k1::privateKeySize);
    } catch (const std::runtime_error &) {
        throw Failure(Failure::Reason::noRandomness);
    }
}

int copyX(unsigned char *output, const unsigned char *x, const unsigned char *, void *)
{
    std::copy_n(x, 32, output);
    return 1;
}

} // namespace

const char *Secp256k1::Failure::what() const noexcept
{
    switch (m_reason) {
    case Reason::noRandomness:
        return "noRandomness";
    case Reason::invalidPrivateKey:
        return "invalidPrivateKey";
    case Reason::invalidPublicKey:
        return "invalidPublicKey";
    case Reason::keyAgreementFailed:
        return "keyAgreementFailed";
    }
    return "";
}

Secp256k1::KeyPair Secp256k1::generateKeyPair(const RandomSource &random)
{
    for (int draw = 0; draw < draws; ++draw) {
        SecretBytes candidate = drawn(random);
        if (isPrivateKey(candidate))
            return pairOf(std::move(candidate));
    }
    throw Failure(Failure::Reason::invalidPrivateKey);
}

Secp256k1::KeyPair Secp256k1::pairOf(SecretBytes privateKey)
{
    secp256k1_pubkey key;
    if (!isPrivateKey(privateKey) || secp256k1_ec_pubkey_create(context(), &key, privateKey.data()) != 1)
        throw Failure(Failure::Reason::invalidPrivateKey);
    QByteArray publicKey(publicKeySize, Qt::Uninitialized);
    std::size_t size = publicKeySize;
    secp256k1_ec_pubkey_serialize(context(), reinterpret_cast<unsigned char *>(publicKey.data()), &size, &key,
                                  SECP256K1_EC_UNCOMPRESSED);
    return {std::move(privateKey), publicKey};
}

SecretBytes Secp256k1::sharedSecret(const SecretBytes &privateKey, QByteArrayView publicKey)
{
    if (!isPrivateKey(privateKey))
        throw Failure(Failure::Reason::invalidPrivateKey);
    const std::optional<secp256k1_pubkey> key = parsed(publicKey);
    if (!key)
        throw Failure(Failure::Reason::invalidPublicKey);
    SecretBytes secret(32);
    if (secp256k1_ecdh(context(), secret.data(), &*key, privateKey.data(), copyX, nullptr) != 1)
        throw Failure(Failure::Reason::keyAgreementFailed);
    return secret;
}

bool Secp256k1::isValidPublicKey(QByteArrayView bytes)
{
    return parsed(bytes).has_value();
}

} // namespace morvane
