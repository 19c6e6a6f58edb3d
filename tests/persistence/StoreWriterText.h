#pragma once

#include <QString>

#include <optional>

namespace morvane {

// Texts that tell their version and whether they are whole, for the store that is killed while it writes.
namespace StoreWriterText {

[[nodiscard]] inline QString make(int version)
{
    return QString::number(version) + u':' + QString(version * 37 % 900, QChar(u'a' + version % 26));
}

// Nothing for a text that isn't whole.
[[nodiscard]] inline std::optional<int> versionOf(const QString &text)
{
    const int version = text.section(u':', 0, 0).toInt();
    return text == make(version) ? std::optional(version) : std::nullopt;
}

} // namespace StoreWriterText

} // namespace morvane
