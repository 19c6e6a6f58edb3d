#include "support/FakeFieldSealing.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString marker = u"\u0001KVT1:"_s;
constexpr qsizetype nonceSize = 12;
constexpr qsizetype tagSize = 16;

QByteArray hidden(QByteArray bytes)
{
    std::transform(bytes.begin(), bytes.end(), bytes.begin(),
                   [](char byte) { return static_cast<char>(byte ^ 0x55); });
    return bytes;
}

} // namespace

bool FakeFieldSealing::isSealed(const QString &text)
{
    return text.startsWith(marker);
}

std::optional<QString> FakeFieldSealing::seal(const QString &text) const
{
    if (m_isLocked)
        return std::nullopt;
    const QByteArray nonce = QByteArray::number(++m_seals).rightJustified(nonceSize, '0');
    const QByteArray box = nonce + hidden(text.toUtf8()) + QByteArray(tagSize, m_key);
    return marker + QString::fromLatin1(box.toBase64());
}

QString FakeFieldSealing::open(const QString &sealed) const
{
    if (!isSealed(sealed))
        return sealed;
    const QByteArray box = QByteArray::fromBase64(sealed.sliced(marker.size()).toLatin1());
    if (m_isLocked || box.size() < nonceSize + tagSize || box.last(tagSize) != QByteArray(tagSize, m_key))
        return {};
    return QString::fromUtf8(hidden(box.sliced(nonceSize).chopped(tagSize)));
}

} // namespace morvane
