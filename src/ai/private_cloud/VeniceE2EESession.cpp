#include "ai/private_cloud/VeniceE2EESession.h"

#include "utils/bytes/HKDF.h"
#include "utils/bytes/Hex.h"
#include "utils/bytes/SealedBox.h"

namespace morvane {

namespace {

using Failure = VeniceE2EESession::Failure;

SecretBytes messageKey(const SecretBytes &privateKey, QByteArrayView publicKey)
{
    const SecretBytes secret = Secp256k1::sharedSecret(privateKey, publicKey);
    return HKDF::sha256(secret, "ecdsa_encryption", SealedBox::keySize);
}

} // namespace

const char *VeniceE2EESession::Failure::what() const noexcept
{
    switch (m_reason) {
    case Reason::badModelKey:
        return "badModelKey";
    case Reason::sealFailed:
        return "sealFailed";
    case Reason::openFailed:
        return "openFailed";
    }
    return "";
}

VeniceE2EESession::VeniceE2EESession(const VeniceAttestationVerifier::Verified &enclave)
    : m_modelKey(enclave.modelPublicKey)
{
    if (!Secp256k1::isValidPublicKey(m_modelKey))
        throw Failure(Failure::Reason::badModelKey);
    m_sessionKey = Secp256k1::generateKeyPair();
}

QString VeniceE2EESession::seal(const QString &text) const
{
    return sealTo(m_modelKey, text);
}

QString VeniceE2EESession::open(QStringView hex) const
{
    return openWith(m_sessionKey.privateKey, hex);
}

QString VeniceE2EESession::sealTo(QByteArrayView publicKey, const QString &text)
{
    QByteArray plain = text.toUtf8();
    try {
        const Secp256k1::KeyPair oneTime = Secp256k1::generateKeyPair();
        const SecretBytes key = messageKey(oneTime.privateKey, publicKey);
        const QString sealed = Hex::encode(oneTime.publicKey + SealedBox::seal(plain, key));
        wipe(plain);
        return sealed;
    } catch (const std::exception &) {
        wipe(plain);
        throw Failure(Failure::Reason::sealFailed);
    }
}

QString VeniceE2EESession::openWith(const SecretBytes &privateKey, QStringView hex)
{
    const std::optional<QByteArray> sealed = Hex::decode(hex);
    if (!sealed || sealed->size() < smallestSealed)
        throw Failure(Failure::Reason::openFailed);
    const QByteArrayView whole(*sealed);
    std::optional<QByteArray> plain;
    try {
        const SecretBytes key = messageKey(privateKey, whole.first(Secp256k1::publicKeySize));
        plain = SealedBox::open(whole.sliced(Secp256k1::publicKeySize), key);
    } catch (const std::exception &) {
        throw Failure(Failure::Reason::openFailed);
    }
    if (!plain)
        throw Failure(Failure::Reason::openFailed);
    const QString text = QString::fromUtf8(*plain);
    wipe(*plain);
    return text;
}

} // namespace morvane
