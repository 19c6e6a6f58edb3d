#include "fuzz/Fuzz.h"

#include "security/InMemoryKeychainService.h"
#include "security/LocalDataVault.h"
#include "security/SealedForm.h"

namespace morvane {

// Stored bytes that something else changed: a vault with the key they were sealed under opens them or not,
// and what it opens it can seal and open again.
void fuzz(QByteArrayView input)
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
    const QByteArray bytes = input.toByteArray();
    const QString field = QString::fromUtf8(bytes);
    const QString opened = vault.open(field);
    require(SealedForm::isSealedField(field) || opened == field);
    require(vault.open(vault.seal(opened).value_or(QString())) == opened && hasKey);

    const auto file = vault.open(bytes);
    require(SealedForm::isSealedFile(bytes) || file == bytes);
    require(!file || vault.open(vault.seal(*file)) == file);
}

} // namespace morvane
