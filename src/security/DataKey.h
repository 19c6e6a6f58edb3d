#pragma once

#include "utils/bytes/SecretBytes.h"

#include <QByteArray>
#include <QStringView>

#include <optional>

namespace morvane {

// The key that seals the person's data, as a keychain keeps it: 32 bytes in standard base64.
namespace DataKey {

// Throws std::runtime_error when the system's random source fails.
[[nodiscard]] SecretBytes make();

// Nothing for a text that is no such key.
[[nodiscard]] std::optional<SecretBytes> parse(QByteArrayView text);
[[nodiscard]] std::optional<SecretBytes> parse(QStringView text);

// Latin-1; wiped by whoever takes it.
[[nodiscard]] QByteArray print(const SecretBytes &key);

} // namespace DataKey

} // namespace morvane
