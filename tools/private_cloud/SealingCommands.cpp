#include "SealingCommands.h"

#include "ai/private_cloud/VeniceE2EESession.h"
#include "utils/bytes/Hex.h"
#include "utils/text/Text.h"

namespace morvane {

QByteArray SealingCommands::seal(const QString &publicKeyHex, const QByteArray &text)
{
    const std::optional<QByteArray> key = Hex::decode(publicKeyHex);
    if (!key || !Secp256k1::isValidPublicKey(*key))
        throw Unusable("--public-key takes 65 bytes of a point on secp256k1, in hexadecimal");
    const std::optional<QString> plain = Text::fromUtf8(text);
    if (!plain)
        throw Unusable("the text is no UTF-8");
    return VeniceE2EESession::sealTo(*key, *plain).toLatin1() + '\n';
}

std::optional<QByteArray> SealingCommands::open(const QString &privateKeyHex, const QByteArray &line)
{
    const std::optional<QByteArray> bytes = Hex::decode(privateKeyHex);
    if (!bytes || bytes->size() != Secp256k1::privateKeySize)
        throw Unusable("--private-key takes 32 bytes in hexadecimal");
    const SecretBytes key(*bytes);
    try {
        return VeniceE2EESession::openWith(key, QString::fromLatin1(line.trimmed())).toUtf8();
    } catch (const VeniceE2EESession::Failure &) {
        return std::nullopt;
    }
}

} // namespace morvane
