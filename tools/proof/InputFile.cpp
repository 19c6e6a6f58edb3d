#include "InputFile.h"

#include "utils/bytes/Base64.h"
#include "utils/bytes/Hex.h"

#include <QFile>
#include <QJsonDocument>

#include <optional>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Encoding = Options::Encoding;

constexpr qint64 fileLimit = qint64{64} * 1024 * 1024; // bytes; real evidence is a few kilobytes

std::optional<QByteArray> decoded(const QByteArray &file, Encoding encoding)
{
    if (encoding == Encoding::Raw)
        return file;
    QByteArray text = file;
    text.removeIf([](char c) { return QChar::fromLatin1(c).isSpace(); });
    return encoding == Encoding::Hex ? Hex::decode(QString::fromLatin1(text)) : Base64::decode(text);
}

// What to write on the command line for a file that looks like text of another encoding. Hexadecimal is
// tried first, since most of it is base64 as well.
QString hint(const QByteArray &file, Encoding tried)
{
    if (tried != Encoding::Hex && decoded(file, Encoding::Hex))
        return u"; it looks like hexadecimal, which --hex reads"_s;
    if (tried == Encoding::Raw && decoded(file, Encoding::Base64))
        return u"; it looks like base64, which --base64 reads"_s;
    return {};
}

// A pipe hands out what it has, so one read isn't all of it.
QByteArray readToEnd(QFile &file)
{
    constexpr qint64 pieceSize = qint64{1024} * 1024;
    QByteArray bytes;
    for (;;) {
        const QByteArray piece = file.read(pieceSize);
        bytes += piece;
        if (piece.isEmpty() || bytes.size() > fileLimit)
            return bytes;
    }
}

QString nameOf(Encoding encoding)
{
    return encoding == Encoding::Hex ? u"hexadecimal"_s : u"base64"_s;
}

} // namespace

QByteArray InputFile::contents(const QString &path)
{
    QFile file(path);
    const bool open = path == "-"_L1 ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    const QByteArray bytes = open ? readToEnd(file) : QByteArray();
    if (!open || file.error() != QFileDevice::NoError)
        throw UsageError(u"%1 can't be read: %2"_s.arg(path, file.errorString()));
    if (bytes.size() > fileLimit)
        throw UsageError(u"%1 is larger than 64 MiB"_s.arg(path));
    if (bytes.isEmpty())
        throw UsageError(u"%1 is empty"_s.arg(path));
    return bytes;
}

QByteArray InputFile::json(const QString &path)
{
    QByteArray bytes = contents(path);
    QJsonParseError error;
    QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError)
        throw UsageError(u"%1 is not JSON: %2 at byte %3"_s.arg(path, error.errorString()).arg(error.offset));
    return bytes;
}

VeniceSignedMeasurementList InputFile::acceptedList(const QString &path)
{
    const QByteArray file = contents(path);
    try {
        return VeniceSignedMeasurementList::read(file, 0);
    } catch (const VeniceSignedMeasurementList::Refusal &refusal) {
        throw UsageError(u"the list %1 can't be used: %2"_s.arg(path, refusal.caseText()));
    }
}

QByteArray InputFile::quote(const Options &options)
{
    const QByteArray file = contents(options.file);
    const auto bytes = decoded(file, options.encoding);
    if (!bytes)
        throw UsageError(
            u"%1 is not %2%3"_s.arg(options.file, nameOf(options.encoding), hint(file, options.encoding)));
    const QString other = options.encoding == Encoding::Raw ? hint(file, Encoding::Raw) : QString();
    if (!other.isEmpty())
        throw UsageError(u"%1 is no quote in raw bytes%2"_s.arg(options.file, other));
    return *bytes;
}

} // namespace morvane
