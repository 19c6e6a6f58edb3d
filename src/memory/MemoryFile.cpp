#include "memory/MemoryFile.h"

#include "security/LocalDataVault.h"
#include "utils/files/PrivateFile.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Text.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView bulletMark = "- "_L1;

QString header()
{
    return u"# What Morvane remembers\n\n"
           "These are Morvane's notes about you from your chats. Add, edit and delete them in Settings; the "
           "app reads them fresh on every launch. The file itself is encrypted on this %1, so a text editor "
           "shows only ciphertext.\n\n"_s.arg(DesktopWords::here().device);
}

bool isLineEnd(QChar c)
{
    return (c >= u'\n' && c <= u'\r') || c == u'\u0085' || c == QChar::LineSeparator ||
           c == QChar::ParagraphSeparator;
}

} // namespace

QString MemoryFile::bullet(const QString &note)
{
    QString line = note;
    line.replace("\r\n"_L1, " "_L1);
    std::replace_if(line.begin(), line.end(), isLineEnd, u' ');
    return bulletMark + line;
}

QByteArray MemoryFile::compose(const QStringList &notes)
{
    QStringList lines;
    for (const QString &note : notes)
        lines.append(bullet(note));
    return (header() + lines.join(u'\n') + u'\n').toUtf8();
}

std::optional<QStringList> MemoryFile::notes(QByteArrayView plain)
{
    const auto text = Text::fromUtf8(plain);
    if (!text)
        return std::nullopt;
    QStringList found;
    for (const QStringView line : QStringView(*text).tokenize(u'\n')) {
        const QStringView trimmed = line.trimmed();
        if (!trimmed.startsWith(bulletMark))
            continue;
        const QStringView note = trimmed.sliced(bulletMark.size()).trimmed();
        if (!note.isEmpty())
            found.append(note.toString());
    }
    return found;
}

std::optional<QStringList> MemoryFile::notesAt(const QString &path, const LocalDataVault &vault)
{
    try {
        const auto contents = PrivateFile::read(path, maxBytes);
        if (!contents)
            return std::nullopt;
        const auto plain = vault.open(*contents);
        return plain ? notes(*plain) : std::nullopt;
    } catch (const FileError &) {
        return std::nullopt;
    }
}

} // namespace morvane
