#include "services/UnlockAttempt.h"

#include "async/CancelledError.h"
#include "security/KeychainError.h"
#include "security/LocalDataVault.h"
#include "security/WrappedKey.h"
#include "utils/text/Product.h"

#include <new>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Outcome = UnlockAttempt::Outcome;

UnlockAttempt unwrapped(const LocalDataVault &vault, const Passphrase &passphrase)
{
    if (passphrase.isEmpty())
        return {Outcome::PassphraseWanted};
    try {
        if (auto key = vault.unwrapKey(passphrase))
            return {Outcome::Opened, std::make_shared<SecretBytes>(std::move(*key))};
        return {Outcome::WrongPassphrase};
    } catch (const WrappedKey::Unreadable &) {
        return {Outcome::KeyUnreadable};
    } catch (const std::bad_alloc &) {
        return {Outcome::TooLittleMemory};
    }
}

} // namespace

UnlockAttempt UnlockAttempt::make(const LocalDataVault &vault, KeychainServicing &keychain,
                                  const Passphrase &passphrase, const std::stop_token &stop)
{
    UnlockAttempt attempt;
    try {
        const auto text = keychain.read(LocalDataVault::keyAccount, u"unlock "_s + Product::name, stop);
        if (!text)
            return attempt;
        if (!WrappedKey::isWrapped(*text))
            return {Outcome::Opened};
        throwIfStopped(stop);
        attempt = unwrapped(vault, passphrase);
    } catch (const KeychainError &error) {
        return {error.status() == KeychainStatus::AuthenticationFailed ? Outcome::WrongAnswer
                                                                       : Outcome::Closed};
    }
    if (attempt.outcome != Outcome::Opened)
        keychain.clearCache(); // whoever tries next shows again that they are there
    return attempt;
}

} // namespace morvane
