#pragma once

#include <QByteArray>
#include <QString>
#include <QUuid>

#include <optional>

namespace morvane {

// What the user handed to the composer: a document's text, or a picture prepared for a model that can see.
// Lives in the request only; the store keeps a record without content.
struct ImportedAttachment {
    QUuid id;
    QString filename;      // display name
    QString fileExtension; // lower case; "image" for a picture, "screen" and "clipboard" for their text
    qint64 fileSizeBytes = 0;
    QString text; // after truncation; empty for an image
    bool wasTruncated = false;
    std::optional<QByteArray> imageData; // JPEG
    QByteArray thumbnail;                // of a picture, see PreparedPicture

    // The attachment's wording for the model; document text is marked as untrusted.
    [[nodiscard]] QString context() const;
};

} // namespace morvane
