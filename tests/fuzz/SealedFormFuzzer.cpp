#include "security/InMemoryKeychainService.h"
#include "security/LocalDataVault.h"
#include "security/SealedForm.h"

#include <cstdint>
#include <cstdlib>

namespace morvane {

// Stored bytes that something else changed: a vault with the key they were sealed under opens them or not,
// and what it opens it can seal and open again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static InMemoryKeychainService keychain;
    static const LocalDataVault vault(keychain);
    static const bool hasKey = [] {
        QByteArray key(32, '\0');
        for (int i = 0; i < 32; ++i)
            key[i] = static_cast<char>(i);
        keychain.save(QString::fromLatin1(key.toBase64()), LocalDataVault::keyAccount);
        return true;
    }();
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));

    const QString field = QString::fromUtf8(bytes);
    const QString opened = vault.open(field);
    if (!SealedForm::isSealedField(field) && opened != field)
        std::abort();
    if (vault.open(vault.seal(opened).value_or(QString())) != opened || !hasKey)
        std::abort();

    const auto file = vault.open(bytes);
    if (!SealedForm::isSealedFile(bytes) && file != bytes)
        std::abort();
    if (file && vault.open(vault.seal(*file)) != file)
        std::abort();
    return 0;
}

} // namespace morvane
