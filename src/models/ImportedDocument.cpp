#include "models/ImportedDocument.h"

namespace morvane {

ImportedDocument::ImportedDocument(std::shared_ptr<const FieldSealing> sealing, Columns columns)
    : Record(RecordKind::ImportedDocument, columns.id, std::move(sealing))
    , m_columns(std::move(columns))
{}

std::shared_ptr<ImportedDocument> ImportedDocument::create(std::shared_ptr<const FieldSealing> sealing,
                                                           const Creation &fields)
{
    Columns columns;
    columns.id = fields.id;
    columns.sealedFilename = sealedAtCreation(*sealing, fields.filename);
    columns.fileExtension = fields.fileExtension;
    columns.fileSizeBytes = fields.fileSizeBytes;
    columns.extractedCharacterCount = fields.extractedCharacterCount;
    columns.wasTruncated = fields.wasTruncated;
    columns.importedAt = fields.importedAt;
    return std::make_shared<ImportedDocument>(std::move(sealing), std::move(columns));
}

void ImportedDocument::sealPlainTexts()
{
    sealIfPlain(m_columns.sealedFilename);
}

} // namespace morvane
