#include "ai/speech/WhisperUpload.h"

#include "audio/AudioQueue.h"
#include "utils/text/Json.h"

#include <QRegularExpression>
#include <QtEndian>

#include <openssl/crypto.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Sound can't hold it: a sample of "--" is a number like any other, but not with all of this behind it.
constexpr QByteArrayView boundary{"morvane-part-5c1e8f0b7a3d"};

template <typename Number>
void append(QByteArray &bytes, Number number)
{
    const Number little = qToLittleEndian(number);
    bytes.append(reinterpret_cast<const char *>(&little), sizeof(little));
}

// One channel of 16 bits, uncompressed.
void appendWav(QByteArray &bytes, std::span<const std::int16_t> samples)
{
    constexpr quint32 rate = AudioQueue::sampleRate;
    constexpr quint16 bytesOfSample = sizeof(std::int16_t);
    const auto size = static_cast<quint32>(samples.size_bytes());
    bytes.append("RIFF");
    append<quint32>(bytes, 36 + size);
    bytes.append("WAVEfmt ");
    append<quint32>(bytes, 16);
    append<quint16>(bytes, 1); // plain numbers
    append<quint16>(bytes, 1); // channel
    append<quint32>(bytes, rate);
    append<quint32>(bytes, rate * bytesOfSample);
    append<quint16>(bytes, bytesOfSample);
    append<quint16>(bytes, 8 * bytesOfSample);
    bytes.append("data");
    append<quint32>(bytes, size);
    bytes.append(reinterpret_cast<const char *>(samples.data()), static_cast<qsizetype>(size));
}

void appendPart(QByteArray &form, QByteArrayView name, QByteArrayView value)
{
    form += "--" + boundary.toByteArray() + "\r\nContent-Disposition: form-data; name=\"";
    form += name;
    form += "\"\r\n\r\n";
    form += value;
    form += "\r\n";
}

} // namespace

QByteArray WhisperUpload::formOf(std::span<const std::int16_t> samples, const QString &language)
{
    QByteArray form;
    form.reserve(static_cast<qsizetype>(samples.size_bytes()) + 1024); // growing would leave sound behind
    appendPart(form, "response_format", "json");
    appendPart(form, "temperature", "0.0");
    appendPart(form, "no_timestamps", "true");
    appendPart(form, "language", language.toLatin1());
    form += "--" + boundary.toByteArray() +
            "\r\nContent-Disposition: form-data; name=\"file\"; filename=\"speech.wav\""
            "\r\nContent-Type: audio/wav\r\n\r\n";
    appendWav(form, samples);
    form += "\r\n--" + boundary.toByteArray() + "--\r\n";
    return form;
}

QByteArray WhisperUpload::contentType()
{
    return "multipart/form-data; boundary=" + boundary.toByteArray();
}

// In place: a copy for itself would leave the other one as it is.
void WhisperUpload::wipe(QByteArray &form)
{
    OPENSSL_cleanse(const_cast<char *>(form.constData()), static_cast<std::size_t>(form.size()));
}

std::optional<QString> WhisperUpload::wordsOf(const QByteArray &answer)
{
    static const QRegularExpression noises(u"\\[[^\\]]*\\]|\\([^)]*\\)|[♪♫]"_s);
    const auto object = Json::parseObject(answer);
    std::optional<QString> text = object ? Json::string(*object, "text"_L1) : std::nullopt;
    if (!text)
        return std::nullopt;
    return text->remove(noises).simplified();
}

} // namespace morvane
