#pragma once

#include <QByteArrayList>
#include <QStringEncoder>

namespace morvane {

// The forms in which words might lie somewhere, but for encryption: as text of three encodings, as digits,
// and as base64, where a text begins at one of three places in a group of three bytes. What its neighbours
// would decide is left out.
inline QByteArrayList formsOf(const QString &words)
{
    QByteArrayList forms;
    for (const auto encoding :
         {QStringConverter::Utf8, QStringConverter::Utf16LE, QStringConverter::Utf16BE}) {
        const QByteArray text = QStringEncoder(encoding)(words);
        forms += {text, text.toHex()};
        for (int ahead = 0; ahead < 3; ++ahead) {
            const qsizetype whole = (ahead + text.size()) / 3 * 4;
            const qsizetype first = ahead == 0 ? 0 : ahead + 1;
            forms += (QByteArray(ahead, ' ') + text).toBase64().mid(first, whole - first);
        }
    }
    return forms;
}

} // namespace morvane
