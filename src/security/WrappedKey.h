#pragma once

#include "utils/bytes/Argon2id.h"
#include "utils/bytes/SecretBytes.h"

#include <QByteArray>
#include <QStringView>

#include <exception>
#include <optional>

namespace morvane {

// The data key as a keychain keeps it while a passphrase of the person's guards it. One line of words, so
// that one form takes the other's place in one write:
//
//   morvane-wrapped-key 1 argon2id <KiB of memory> <passes> <salt> <box>
//
// Salt (16 bytes) and box are in standard base64. The box is a SealedBox of the 32 bytes of the key, under
// the 32 bytes that Argon2id (version 1.3, one lane) makes of the passphrase in composed UTF-8 with that
// salt. The cost needs no seal of its own: under another one the box doesn't open.
namespace WrappedKey {

// The text says that it is a wrapped key, and is none that this build can open.
class Unreadable final : public std::exception {
public:
    [[nodiscard]] const char *what() const noexcept override { return "the wrapped key is unreadable"; }
};

// Of any version, readable or not: the vault puts no new key in the place of such a text.
[[nodiscard]] bool isWrapped(QStringView text);
[[nodiscard]] bool isWrapped(QByteArrayView text);
[[nodiscard]] bool isReadable(QStringView text);

// Latin-1. Throws what Argon2id::derive() throws, and std::runtime_error when a cipher or the source of the
// salt fails, or when what was made wouldn't open again.
[[nodiscard]] QByteArray wrap(const SecretBytes &key, const SecretBytes &passphrase,
                              const Argon2id::Cost &cost);

// Nothing: it is under another passphrase. Throws Unreadable, and what Argon2id::derive() throws.
[[nodiscard]] std::optional<SecretBytes> unwrap(QStringView text, const SecretBytes &passphrase);

} // namespace WrappedKey

} // namespace morvane
