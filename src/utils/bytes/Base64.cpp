#include "utils/bytes/Base64.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace morvane {

namespace {

// Tables of our own: every stored text that is written or shown passes here, and Qt's decoder takes several
// times as long.
constexpr std::string_view alphabet{"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"};

constexpr std::uint32_t invalid = 0x40; // one bit above the values of the alphabet

constexpr auto values = [] {
    std::array<std::uint8_t, 256> table{};
    table.fill(invalid);
    std::uint8_t value = 0;
    for (const char c : alphabet)
        table[static_cast<unsigned char>(c)] = value++;
    return table;
}();

std::uint32_t valueOf(char c)
{
    return values[static_cast<unsigned char>(c)];
}

std::uint32_t valueOf(QChar c)
{
    return c.unicode() < values.size() ? values[c.unicode()] : invalid;
}

template <typename View>
qsizetype paddingOf(View text)
{
    const auto isPadding = [&](qsizetype fromEnd) { return text[text.size() - fromEnd] == u'='; };
    if (text.isEmpty() || !isPadding(1))
        return 0;
    return isPadding(2) ? 2 : 1;
}

// Four characters become three bytes; "=" stands for what is missing in the last group.
template <typename View>
std::optional<QByteArray> decodeText(View text)
{
    if (text.size() % 4 != 0)
        return std::nullopt;
    const qsizetype padding = paddingOf(text);
    const qsizetype digits = text.size() - padding;
    QByteArray bytes(text.size() / 4 * 3, Qt::Uninitialized);
    char *const out = bytes.data();
    qsizetype written = 0;
    std::uint32_t seen = 0;
    for (qsizetype i = 0; i < text.size(); i += 4) {
        const std::uint32_t a = valueOf(text[i]);
        const std::uint32_t b = valueOf(text[i + 1]);
        const std::uint32_t c = i + 2 < digits ? valueOf(text[i + 2]) : 0;
        const std::uint32_t d = i + 3 < digits ? valueOf(text[i + 3]) : 0;
        seen |= a | b | c | d;
        const std::uint32_t group = a << 18 | b << 12 | c << 6 | d;
        out[written++] = static_cast<char>(group >> 16);
        out[written++] = static_cast<char>(group >> 8);
        out[written++] = static_cast<char>(group);
    }
    if (seen & invalid)
        return std::nullopt;
    bytes.chop(padding);
    return bytes;
}

// Three bytes as one number; what is missing at the end counts as zero.
std::uint32_t groupAt(QByteArrayView bytes, qsizetype at)
{
    const auto byte = [&](qsizetype i) {
        return i < bytes.size() ? static_cast<unsigned char>(bytes.data()[i]) : 0U;
    };
    return byte(at) << 16 | byte(at + 1) << 8 | byte(at + 2);
}

} // namespace

std::optional<QByteArray> Base64::decode(QByteArrayView text)
{
    return decodeText(text);
}

std::optional<QByteArray> Base64::decode(QStringView text)
{
    return decodeText(text);
}

void Base64::append(QString &text, QByteArrayView bytes)
{
    qsizetype written = text.size();
    text.resize(written + (bytes.size() + 2) / 3 * 4);
    QChar *const out = text.data();
    for (qsizetype i = 0; i < bytes.size(); i += 3) {
        const std::uint32_t group = groupAt(bytes, i);
        out[written++] = QLatin1Char(alphabet[group >> 18]);
        out[written++] = QLatin1Char(alphabet[group >> 12 & 0x3f]);
        out[written++] = QLatin1Char(alphabet[group >> 6 & 0x3f]);
        out[written++] = QLatin1Char(alphabet[group & 0x3f]);
    }
    for (qsizetype padding = (3 - bytes.size() % 3) % 3; padding > 0; --padding)
        out[written - padding] = u'=';
}

QByteArray Base64::encode(QByteArrayView bytes)
{
    return QByteArray::fromRawData(bytes.data(), bytes.size()).toBase64();
}

} // namespace morvane
