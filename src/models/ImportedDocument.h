#pragma once

#include "models/Record.h"

#include <QDateTime>

namespace morvane {

// A file that was imported into a chat, without its content. Its id is the attachment id of the message that
// carried it.
class ImportedDocument final : public Record {
public:
    // The row as it is stored.
    struct Columns {
        QUuid id;
        QString sealedFilename;
        QString fileExtension; // "image" for a picture
        std::int64_t fileSizeBytes = 0;
        std::int64_t extractedCharacterCount = 0; // after any truncation
        bool wasTruncated = false;
        QDateTime importedAt;

        bool operator==(const Columns &) const = default;
    };

    // A new document in readable form.
    struct Creation {
        QUuid id;
        QString filename;
        QString fileExtension;
        std::int64_t fileSizeBytes = 0;
        std::int64_t extractedCharacterCount = 0;
        bool wasTruncated = false;
        QDateTime importedAt;
    };

    ImportedDocument(std::shared_ptr<const FieldSealing> sealing, Columns columns);

    // Seals the file name at once.
    [[nodiscard]] static std::shared_ptr<ImportedDocument> create(std::shared_ptr<const FieldSealing> sealing,
                                                                  const Creation &fields);

    [[nodiscard]] const Columns &columns() const { return m_columns; }

    [[nodiscard]] QString filename() const { return opened(m_columns.sealedFilename); }

    [[nodiscard]] const QString &fileExtension() const { return m_columns.fileExtension; }
    [[nodiscard]] std::int64_t fileSizeBytes() const { return m_columns.fileSizeBytes; }
    [[nodiscard]] std::int64_t extractedCharacterCount() const { return m_columns.extractedCharacterCount; }
    [[nodiscard]] bool wasTruncated() const { return m_columns.wasTruncated; }
    [[nodiscard]] const QDateTime &importedAt() const { return m_columns.importedAt; }

    // Seals what a build from before sealing left readable.
    void sealPlainTexts();

private:
    Columns m_columns;
};

} // namespace morvane
