#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <optional>

namespace morvane {

namespace Base64 {

// Standard alphabet with padding, no line breaks (RFC 4648 section 4). Anything else, a missing or
// superfluous "=" included, is nothing.
[[nodiscard]] std::optional<QByteArray> decode(QByteArrayView text);
[[nodiscard]] std::optional<QByteArray> decode(QStringView text);

[[nodiscard]] QByteArray encode(QByteArrayView bytes);

// The same, behind what stands in `text`.
void append(QString &text, QByteArrayView bytes);

} // namespace Base64

} // namespace morvane
