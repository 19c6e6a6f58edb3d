#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace morvane {

// A cursor over bytes from outside that cannot pass their end. A read that would is no value and moves
// nothing.
class ByteReader {
public:
    explicit ByteReader(std::span<const std::byte> bytes)
        : m_bytes(bytes)
    {}

    [[nodiscard]] std::size_t position() const { return m_position; }
    [[nodiscard]] std::size_t remaining() const { return m_bytes.size() - m_position; }

    std::optional<std::span<const std::byte>> read(std::size_t count);
    std::optional<std::uint8_t> readUInt8();

    // Little-endian.
    std::optional<std::uint16_t> readUInt16();
    std::optional<std::uint32_t> readUInt32();
    std::optional<std::uint64_t> readUInt64();

private:
    template <typename T>
    std::optional<T> readLittleEndian();

    std::span<const std::byte> m_bytes;
    std::size_t m_position = 0;
};

} // namespace morvane
