#include "utils/Base64.h"

std::optional<QByteArray> Base64::decode(QByteArrayView text)
{
    // Qt accepts input without padding even in strict mode.
    if (text.size() % 4 != 0)
        return std::nullopt;
    const auto raw = QByteArray::fromRawData(text.data(), text.size());
    const auto result = QByteArray::fromBase64Encoding(raw, QByteArray::Base64Encoding |
                                                                QByteArray::AbortOnBase64DecodingErrors);
    if (result.decodingStatus != QByteArray::Base64DecodingStatus::Ok)
        return std::nullopt;
    return result.decoded;
}

QByteArray Base64::encode(QByteArrayView bytes)
{
    return QByteArray::fromRawData(bytes.data(), bytes.size()).toBase64();
}
