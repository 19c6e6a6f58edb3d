#pragma once

#include <QString>

namespace morvane {

struct ImportedAttachment;

// What the composer says of an attachment.
namespace AttachmentWords {

// As far as something that is being read has come. Zero where it isn't known.
struct Reading {
    QString name;
    qsizetype number = 1; // of those that were handed over together
    qsizetype count = 1;
    int pagesDone = 0;
    int pages = 0;

    [[nodiscard]] double share() const; // 0 to 1; negative while it isn't known
};

// A name in one line, whatever a file is called.
[[nodiscard]] QString nameOf(const QString &filename);

// The drawing of a kind of file.
[[nodiscard]] QString glyphOf(const QString &fileExtension);

// Its kind, its size, and whether it was cut.
[[nodiscard]] QString detailOf(const ImportedAttachment &attachment);
[[nodiscard]] QString detailOf(const Reading &reading);

[[nodiscard]] QString truncated(const QString &name);

// Why not all that was handed over is there.
[[nodiscard]] QString onlyOneOf(qsizetype count, const QString &name);
[[nodiscard]] QString inPlaceOf(const QString &former, const QString &name);

} // namespace AttachmentWords

} // namespace morvane
