#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace morvane {

class LocalDataVault;

// The notes as they stand in a file: Markdown in UTF-8 under a heading, one bullet for each note, oldest
// first, sealed as a whole.
namespace MemoryFile {

// Far above any list that this program writes; a larger file is not read.
inline constexpr qsizetype maxBytes = 16 << 20;

// A note as one bullet. Line ends inside it become blanks: a note is one line wherever it stands.
[[nodiscard]] QString bullet(const QString &note);

[[nodiscard]] QByteArray compose(const QStringList &notes);

// The notes of an opened file. Lines that are no bullets are ignored. Nothing for bytes that are not UTF-8.
[[nodiscard]] std::optional<QStringList> notes(QByteArrayView plain);

// The notes of a sealed or plain file. Nothing when the file is missing, or can't be read, opened or
// decoded.
[[nodiscard]] std::optional<QStringList> notesAt(const QString &path, const LocalDataVault &vault);

} // namespace MemoryFile

} // namespace morvane
