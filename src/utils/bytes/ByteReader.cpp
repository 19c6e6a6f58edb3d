#include "utils/bytes/ByteReader.h"

namespace morvane {

std::optional<std::span<const std::byte>> ByteReader::read(std::size_t count)
{
    if (count > remaining())
        return std::nullopt;
    const auto result = m_bytes.subspan(m_position, count);
    m_position += count;
    return result;
}

template <typename T>
std::optional<T> ByteReader::readLittleEndian()
{
    const auto bytes = read(sizeof(T));
    if (!bytes)
        return std::nullopt;
    T value = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i)
        value |= static_cast<T>(std::to_integer<T>((*bytes)[i]) << (8 * i));
    return value;
}

std::optional<std::uint8_t> ByteReader::readUInt8()
{
    return readLittleEndian<std::uint8_t>();
}

std::optional<std::uint16_t> ByteReader::readUInt16()
{
    return readLittleEndian<std::uint16_t>();
}

std::optional<std::uint32_t> ByteReader::readUInt32()
{
    return readLittleEndian<std::uint32_t>();
}

std::optional<std::uint64_t> ByteReader::readUInt64()
{
    return readLittleEndian<std::uint64_t>();
}

} // namespace morvane
