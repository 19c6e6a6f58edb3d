#pragma once

#include <QString>

#include <vector>

namespace morvane {

// Where the practice runtime's models come from: bytes made up from their names, the same ones each time.
namespace PretendRegistry {

inline constexpr qint64 portion = 65'536; // bytes that arrive at once

struct Layer {
    QByteArray seed;
    qint64 size = 0;   // bytes
    QByteArray digest; // 64 hexadecimal digits
};

// The layers of a model, the weights first. Throws a runtime_error for a name that starts with "missing".
[[nodiscard]] std::vector<Layer> layers(const QString &model);

// The bytes from `offset`, a multiple of the portion, on: one portion, or what is left.
[[nodiscard]] QByteArray bytes(const Layer &layer, qint64 offset);

} // namespace PretendRegistry

} // namespace morvane
