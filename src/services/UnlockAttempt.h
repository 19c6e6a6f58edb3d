#pragma once

#include "utils/bytes/SecretBytes.h"

#include <memory>
#include <stop_token>

namespace morvane {

class KeychainServicing;
class LocalDataVault;
class Passphrase;

// What came of one attempt to get at the data key.
struct UnlockAttempt {
    enum class Outcome {
        Opened,
        Closed, // nobody answered, or the keychain failed
        WrongAnswer,
        WrongPassphrase,
        PassphraseWanted, // none was given, and the key stands under one
        KeyUnreadable,    // it stands under a passphrase in a form that this build can't read
        TooLittleMemory,  // to try the passphrase
    };

    Outcome outcome = Outcome::Closed;
    std::shared_ptr<SecretBytes> key = nullptr; // that the passphrase opened; null where none guards it

    // Prompts if the keychain has to, and takes a passphrase's time; not for the GUI thread. A key without a
    // passphrase is left in the keychain's cache, where the vault finds it. Throws CancelledError.
    [[nodiscard]] static UnlockAttempt make(const LocalDataVault &vault, KeychainServicing &keychain,
                                            const Passphrase &passphrase, const std::stop_token &stop);
};

} // namespace morvane
