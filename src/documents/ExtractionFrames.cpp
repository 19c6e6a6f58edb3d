#include "documents/ExtractionFrames.h"

#include <QtEndian>

namespace morvane {

using namespace ExtractionFrames;

namespace {

constexpr qsizetype headSize = 5;

QByteArray number(quint32 value)
{
    QByteArray bytes(sizeof value, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

bool isKind(char byte)
{
    return QByteArrayView("ptimlfd").contains(byte);
}

} // namespace

QByteArray ExtractionFrames::encoded(Kind kind, QByteArrayView payload)
{
    QByteArray frame(1, static_cast<char>(kind));
    frame += number(static_cast<quint32>(payload.size()));
    frame += payload;
    return frame;
}

QByteArray ExtractionFrames::encodedProgress(quint32 done, quint32 total)
{
    return encoded(Kind::Progress, number(done) + number(total));
}

std::optional<Progress> ExtractionFrames::progressOf(QByteArrayView payload)
{
    if (payload.size() != 2 * sizeof(quint32))
        return std::nullopt;
    return Progress{qFromLittleEndian<quint32>(payload.data()),
                    qFromLittleEndian<quint32>(payload.data() + 4)};
}

std::optional<Frame> ExtractionFrames::take(QByteArray &bytes, bool &isBroken)
{
    if (bytes.size() < headSize)
        return std::nullopt;
    const auto size = static_cast<qsizetype>(qFromLittleEndian<quint32>(bytes.constData() + 1));
    isBroken = !isKind(bytes.front()) || size > longestFrame;
    if (isBroken || bytes.size() - headSize < size)
        return std::nullopt;
    Frame frame{static_cast<Kind>(bytes.front()), bytes.sliced(headSize, size)};
    bytes.remove(0, headSize + size);
    return frame;
}

} // namespace morvane
