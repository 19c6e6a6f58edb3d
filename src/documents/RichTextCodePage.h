#pragma once

#include <QByteArrayView>
#include <QString>

namespace morvane {

// Code pages by their Windows numbers, as rich text names them.
namespace RichTextCodePage {

inline constexpr int western = 1252;

// The code page of a font's character set, \fcharset; 0 where the document's own holds, as it does for the
// set that is called ANSI: writers leave it at that whatever their code page is.
[[nodiscard]] int ofCharacterSet(int characterSet);

// Bytes without a meaning become U+FFFD. An unknown code page is read as the western one.
[[nodiscard]] QString decoded(QByteArrayView bytes, int codePage);

} // namespace RichTextCodePage

} // namespace morvane
