#include "utils/bytes/SealedBox.h"

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <limits>
#include <memory>
#include <stdexcept>

namespace morvane {

namespace {

using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)>;

// Fetching a cipher by name walks the provider tables; a process needs it once.
const EVP_CIPHER *aes256gcm()
{
    static EVP_CIPHER *const cipher = EVP_CIPHER_fetch(nullptr, "AES-256-GCM", nullptr);
    return cipher;
}

// Contexts are reused within a thread: making one costs as much as sealing a short text.
EVP_CIPHER_CTX *threadContext()
{
    thread_local const CipherContext context(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
    return context.get();
}

// Clears key material that the context copied, on every way out.
class ContextUse {
public:
    ContextUse()
        : context(threadContext())
    {}
    ~ContextUse() { EVP_CIPHER_CTX_reset(context); }
    ContextUse(const ContextUse &) = delete;
    ContextUse &operator=(const ContextUse &) = delete;

    EVP_CIPHER_CTX *const context;
};

const unsigned char *bytesOf(QByteArrayView view)
{
    return reinterpret_cast<const unsigned char *>(view.data());
}

unsigned char *bytesOf(QByteArray &array)
{
    return reinterpret_cast<unsigned char *>(array.data());
}

void require(bool ok)
{
    if (!ok)
        throw std::runtime_error("sealing failed");
}

} // namespace

QByteArray SealedBox::seal(QByteArrayView plaintext, const SecretBytes &key)
{
    require(key.size() == keySize && plaintext.size() <= std::numeric_limits<int>::max());
    const auto length = static_cast<int>(plaintext.size());
    QByteArray box(nonceSize + length + tagSize, Qt::Uninitialized);
    unsigned char *const nonce = bytesOf(box);
    unsigned char *const ciphertext = nonce + nonceSize;
    require(RAND_bytes(nonce, nonceSize) == 1);

    const ContextUse use;
    int written = 0;
    require(EVP_EncryptInit_ex2(use.context, aes256gcm(), key.data(), nonce, nullptr) == 1);
    require(EVP_EncryptUpdate(use.context, ciphertext, &written, bytesOf(plaintext), length) == 1);
    require(EVP_EncryptFinal_ex(use.context, ciphertext + written, &written) == 1);
    require(EVP_CIPHER_CTX_ctrl(use.context, EVP_CTRL_GCM_GET_TAG, tagSize, ciphertext + length) == 1);
    return box;
}

std::optional<QByteArray> SealedBox::open(QByteArrayView box, const SecretBytes &key)
{
    const qsizetype length = box.size() - nonceSize - tagSize;
    if (key.size() != keySize || length < 0 || length > std::numeric_limits<int>::max())
        return std::nullopt;
    const unsigned char *const nonce = bytesOf(box);
    const unsigned char *const ciphertext = nonce + nonceSize;
    QByteArray plaintext(length, Qt::Uninitialized);
    QByteArray tag(box.last(tagSize).toByteArray());

    const ContextUse use;
    int written = 0;
    const bool verified =
        EVP_DecryptInit_ex2(use.context, aes256gcm(), key.data(), nonce, nullptr) == 1 &&
        EVP_DecryptUpdate(use.context, bytesOf(plaintext), &written, ciphertext, static_cast<int>(length)) ==
            1 &&
        EVP_CIPHER_CTX_ctrl(use.context, EVP_CTRL_GCM_SET_TAG, tagSize, bytesOf(tag)) == 1 &&
        EVP_DecryptFinal_ex(use.context, bytesOf(plaintext) + written, &written) == 1;
    if (!verified) {
        wipe(plaintext); // unverified plaintext was already written to it
        return std::nullopt;
    }
    return plaintext;
}

} // namespace morvane
