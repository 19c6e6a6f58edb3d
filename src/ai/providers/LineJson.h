#pragma once

#include <QByteArrayView>
#include <QJsonObject>

#include <optional>

namespace morvane {

// JSON as model servers send it: where a piece was cut inside a character, its bytes are no UTF-8, and they
// count as replacement characters.
namespace LineJson {

// Nothing for invalid JSON or another top level than an object.
[[nodiscard]] std::optional<QJsonObject> parseObject(QByteArrayView line);

// The bytes as valid UTF-8, with replacement characters where they are not.
[[nodiscard]] QByteArray validUtf8(QByteArrayView bytes);

} // namespace LineJson

} // namespace morvane
