#include "utils/bytes/Hex.h"

namespace morvane {

namespace {

int digitValue(QChar c)
{
    const char16_t u = c.unicode();
    if (u >= u'0' && u <= u'9')
        return u - u'0';
    if (u >= u'a' && u <= u'f')
        return u - u'a' + 10;
    if (u >= u'A' && u <= u'F')
        return u - u'A' + 10;
    return -1;
}

} // namespace

std::optional<QByteArray> Hex::decode(QStringView text)
{
    if (text.startsWith(u"0x"))
        text = text.sliced(2);
    if (text.size() % 2 != 0)
        return std::nullopt;
    QByteArray bytes;
    bytes.reserve(text.size() / 2);
    for (qsizetype i = 0; i < text.size(); i += 2) {
        const int high = digitValue(text[i]);
        const int low = digitValue(text[i + 1]);
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes.append(static_cast<char>(high * 16 + low));
    }
    return bytes;
}

QString Hex::encode(QByteArrayView bytes)
{
    return QString::fromLatin1(QByteArray::fromRawData(bytes.data(), bytes.size()).toHex());
}

} // namespace morvane
