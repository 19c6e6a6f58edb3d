#pragma once

#include <QByteArrayView>
#include <QString>

namespace morvane {

// The text of a document, from its bytes to what fits into a request.
namespace DocumentText {

// The text of a plain file: by its byte order mark where it has one (UTF-8, UTF-16, UTF-32), else UTF-8, else
// ISO Latin 1, in which everything means something. Line ends become line feeds; the mark is left out.
[[nodiscard]] QString decoded(QByteArrayView bytes);

struct Cut {
    QString text;
    bool wasTruncated = false;
};

// The text without whitespace and newlines at its ends, and no more than `limit` characters of it: up to a
// paragraph's or a sentence's end where one lies in the last fifth.
[[nodiscard]] Cut cut(const QString &text, qsizetype limit);

} // namespace DocumentText

} // namespace morvane
