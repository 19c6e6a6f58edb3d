#pragma once

#include <QByteArray>
#include <QString>

namespace morvane {

// The folder that this program was unpacked into, as its archive made it.
namespace Installation {

// This program's file.
[[nodiscard]] QString binary();

// The folder that the maker of the archive wrote behind the program, in the program's own file, so that one
// that runs without the rest can tell on it. Empty where nobody wrote one.
[[nodiscard]] QString practiceFolder();

// The last bytes of a program for that folder.
[[nodiscard]] QByteArray trailer(const QString &folder);

// Every file that lib/ollama/contents.json lists (path to SHA-256) is there and is what it was. So a
// program that runs from half an installation, or from one that was changed, tells on whoever started it.
[[nodiscard]] bool isWhole();

} // namespace Installation

} // namespace morvane
