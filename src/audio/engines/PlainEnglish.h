#pragma once

#include <QByteArray>
#include <QStringView>

namespace morvane {

// What an English voice can say of a text, in ASCII: typographic marks as their plain forms, letters without
// their accents, and nothing of what has no words: pictures, other scripts, control characters.
namespace PlainEnglish {

// Empty when no letter and no digit is left.
[[nodiscard]] QByteArray of(QStringView text);

} // namespace PlainEnglish

} // namespace morvane
