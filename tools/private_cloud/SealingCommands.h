#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <stdexcept>

namespace morvane {

// One message sealed or opened over bare keys, by the very code that the application does it with.
namespace SealingCommands {

// A key or an input that no message can be made of; its words are for the person at the terminal.
class Unusable final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The sealed text, one line of hexadecimal. The input is UTF-8, every byte of which is sealed, a line end
// included. Throws Unusable.
[[nodiscard]] QByteArray seal(const QString &publicKeyHex, const QByteArray &text);

// The text of a line of hexadecimal, white space around it aside. Nothing when it doesn't open. Throws
// Unusable for a key that is none.
[[nodiscard]] std::optional<QByteArray> open(const QString &privateKeyHex, const QByteArray &line);

} // namespace SealingCommands

} // namespace morvane
