#pragma once

#include <QString>

#include <cstdint>

namespace morvane {

// Where the keychain stands, from the start of the process until it can be used, and why it cannot.
enum class KeychainState : std::uint8_t {
    Opening,          // being asked; nothing is known yet
    WaitingForUnlock, // the desktop asks the person for the keyring's password
    Ready,            // the keyring is open
    ReadyInFile,      // no keyring answers; a private file stands in
    Locked,           // the person dismissed the prompt
    Unavailable,      // the keyring that holds the key does not answer
    KeyMissing,       // sealed data is there, the key that opens it is not
    KeyUnusable,      // sealed data is there, and what stands in the key's place is no key
    FileUnreadable,   // the private file is broken or cannot be made
};

// Whether sealed data exists, so that a key must be there to open it.
enum class KeyExpectation { Unknown, MustExist };

// Whether secrets can be read and stored, so that the stores may be opened.
[[nodiscard]] bool isReady(KeychainState state);

// Whether asking again may help, so that the window offers it.
[[nodiscard]] bool canRetry(KeychainState state);

// Whether the person can go on without what is sealed or broken, which is put aside.
[[nodiscard]] bool canStartAfresh(KeychainState state, KeyExpectation expectation);

// Whether the private file can take the keyring's place: only for data that has no key yet.
[[nodiscard]] bool canUseFile(KeychainState state, KeyExpectation expectation);

// What the window says, and Settings for ReadyInFile; empty where there is nothing to say.
[[nodiscard]] QString sentenceFor(KeychainState state,
                                  KeyExpectation expectation = KeyExpectation::MustExist);

} // namespace morvane
