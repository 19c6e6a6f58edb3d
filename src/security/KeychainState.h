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
    FileUnreadable,   // the private file is broken or cannot be made
};

// Whether secrets can be read and stored, so that the stores may be opened.
[[nodiscard]] bool isReady(KeychainState state);

// Whether asking again may help, so that the window offers it.
[[nodiscard]] bool canRetry(KeychainState state);

// What the window says, and Settings for ReadyInFile; empty where there is nothing to say.
[[nodiscard]] QString sentenceFor(KeychainState state);

} // namespace morvane
