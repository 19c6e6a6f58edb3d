#include "ai/speech/WhisperModel.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

namespace morvane {

namespace {

// A file begins with its magic number and eleven counts, each of 32 bits, least significant byte first; the
// first of them is how many tokens the model knows.
constexpr qint64 headSize = qint64{12} * 4;
constexpr quint32 magic = 0x67676d6c;
constexpr quint32 tokensOfEnglish = 51'864;
constexpr quint32 mostTokens = 52'000; // each further language is a token

} // namespace

std::optional<WhisperModel> WhisperModel::read(const QString &path)
{
    if (!QFileInfo(path).isFile())
        return std::nullopt;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray head = file.read(headSize);
    if (head.size() != headSize || qFromLittleEndian<quint32>(head.constData()) != magic)
        return std::nullopt;
    const auto tokens = qFromLittleEndian<quint32>(head.constData() + sizeof(magic));
    if (tokens < tokensOfEnglish || tokens > mostTokens)
        return std::nullopt;
    return WhisperModel{tokens > tokensOfEnglish};
}

} // namespace morvane
