#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>

namespace morvane {

// Bytes of the largest graphics card's own memory; 0 without one. A driver that lies or is broken has none.
namespace GraphicsMemory {

// By the management library of NVIDIA's driver, of the given name or path.
[[nodiscard]] std::uint64_t nvidia(const QByteArray &library);

// By the files of the kernel's driver below `sys`.
[[nodiscard]] std::uint64_t amd(const QString &sys);

} // namespace GraphicsMemory

} // namespace morvane
