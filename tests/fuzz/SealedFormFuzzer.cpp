#include "fuzz/Fuzz.h"

#include "security/InMemoryKeychainService.h"
#include "security/LocalDataVault.h"
#include "security/SealedForm.h"

#include <numeric>

// Stored bytes that something else changed: a vault with the key they were sealed under opens them or not,
// and what it opens it can seal and open again.
void morvane::fuzz(QByteArrayView input)
{
    static InMemoryKeychainService keychain;
    static const LocalDataVault vault = [] {
        QByteArray key(32, '\0');
        std::iota(key.begin(), key.end(), '\0');
        keychain.save(QString::fromLatin1(key.toBase64()), LocalDataVault::keyAccount);
        return LocalDataVault(keychain);
    }();
    const QByteArray bytes = input.toByteArray();
    const QString field = QString::fromUtf8(bytes);
    const QString opened = vault.open(field);
    require(SealedForm::isSealedField(field) || opened == field);
    require(vault.open(vault.seal(opened).value_or(QString())) == opened);

    const auto file = vault.open(bytes);
    require(SealedForm::isSealedFile(bytes) || file == bytes);
    require(!file || vault.open(vault.seal(*file)) == file);
}
