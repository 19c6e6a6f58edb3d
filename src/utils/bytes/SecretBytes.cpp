#include "utils/bytes/SecretBytes.h"

#include <openssl/crypto.h>
#include <openssl/rand.h>

#include <array>
#include <stdexcept>
#include <utility>

namespace morvane {

void wipe(QByteArray &secret)
{
    if (!secret.isEmpty())
        OPENSSL_cleanse(secret.data(), static_cast<std::size_t>(secret.size()));
    secret.clear();
}

void wipe(QString &secret)
{
    if (!secret.isEmpty())
        OPENSSL_cleanse(secret.data(), static_cast<std::size_t>(secret.size()) * sizeof(QChar));
    secret.clear();
}

[[gnu::noinline]] void wipeStack()
{
    std::array<unsigned char, 64 * 1024> room;
    OPENSSL_cleanse(room.data(), room.size());
}

SecretBytes::SecretBytes(QByteArrayView bytes)
    : m_bytes(reinterpret_cast<const unsigned char *>(bytes.data()),
              reinterpret_cast<const unsigned char *>(bytes.data()) + bytes.size())
{}

SecretBytes::SecretBytes(std::size_t count)
    : m_bytes(count)
{}

SecretBytes::~SecretBytes()
{
    OPENSSL_cleanse(m_bytes.data(), m_bytes.size());
}

SecretBytes::SecretBytes(SecretBytes &&other) noexcept
    : m_bytes(std::exchange(other.m_bytes, {}))
{}

SecretBytes &SecretBytes::operator=(SecretBytes &&other) noexcept
{
    std::swap(m_bytes, other.m_bytes);
    return *this;
}

SecretBytes SecretBytes::random(std::size_t count)
{
    SecretBytes result(count);
    if (RAND_bytes(result.data(), static_cast<int>(count)) != 1)
        throw std::runtime_error("the system's random source failed");
    return result;
}

QByteArrayView SecretBytes::view() const
{
    return {m_bytes.data(), static_cast<qsizetype>(m_bytes.size())};
}

} // namespace morvane
