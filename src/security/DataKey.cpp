#include "security/DataKey.h"

#include "security/SealedForm.h"
#include "utils/bytes/Base64.h"

namespace morvane {

namespace {

std::optional<SecretBytes> keyFrom(std::optional<QByteArray> bytes)
{
    if (!bytes)
        return std::nullopt;
    std::optional<SecretBytes> key;
    if (bytes->size() == SealedForm::keySize)
        key.emplace(*bytes);
    wipe(*bytes);
    return key;
}

} // namespace

SecretBytes DataKey::make()
{
    return SecretBytes::random(SealedForm::keySize);
}

std::optional<SecretBytes> DataKey::parse(QByteArrayView text)
{
    return keyFrom(Base64::decode(text));
}

std::optional<SecretBytes> DataKey::parse(QStringView text)
{
    return keyFrom(Base64::decode(text));
}

QByteArray DataKey::print(const SecretBytes &key)
{
    return Base64::encode(key.view());
}

} // namespace morvane
