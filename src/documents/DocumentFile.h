#pragma once

#include <QByteArray>
#include <QString>

namespace morvane {

// A file that a person handed over, of which nothing is known but its path.
namespace DocumentFile {

inline constexpr qint64 maxFileSizeBytes = 20'971'520;

// The path's extension in lower case, without its dot; empty for none, and for a name that only begins with a
// dot.
[[nodiscard]] QString extensionOf(const QString &path);

// Whether text can be taken from files of this extension.
[[nodiscard]] bool isSupported(const QString &extension);

// Whether the extension names a picture.
[[nodiscard]] bool isImage(const QString &extension);

// All bytes of a regular file, or of a link to one, as they were when they were read. What is no regular file
// is never opened: a pipe would wait for its other end, and opening a device may set something off. A file
// that grows meanwhile is read no further than one byte past the limit.
//
// Throws DocumentError: `unreadable`, or `fileTooLarge` with the size as far as it is known.
// May wait for the disk; any thread.
[[nodiscard]] QByteArray read(const QString &path, qint64 limitBytes = maxFileSizeBytes);

} // namespace DocumentFile

} // namespace morvane
