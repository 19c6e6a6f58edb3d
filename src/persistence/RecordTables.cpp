#include "persistence/RecordTables.h"

#include <algorithm>
#include <array>

namespace morvane {

using SqlCoding::value;

namespace {

// The raw texts of an enumeration, shared by all rows that hold them.
template <typename Enum>
std::span<const QString> sharedTexts()
{
    static const auto texts = [] {
        std::array<QString, rawTexts<Enum>.size()> shared;
        std::ranges::copy(rawTexts<Enum>, shared.begin());
        return shared;
    }();
    return texts;
}

} // namespace

Conversation::Columns RecordTable<Conversation>::read(const QUuid &id, Statement &row)
{
    Conversation::Columns columns;
    columns.id = id;
    columns.sealedTitle = row.text();
    columns.createdAt = row.date();
    columns.updatedAt = row.date();
    columns.sealedRollingSummary = row.optionalText();
    columns.personaPreset = row.optionalText();
    columns.spaceRaw = row.optionalText();
    return columns;
}

void RecordTable<Conversation>::bind(Statement &statement, const Conversation::Columns &columns)
{
    statement.bind(value(columns.id))
        .bind(value(columns.sealedTitle))
        .bind(value(columns.createdAt))
        .bind(value(columns.updatedAt))
        .bind(value(columns.sealedRollingSummary))
        .bind(value(columns.personaPreset))
        .bind(value(columns.spaceRaw));
}

ChatMessage::Columns RecordTable<ChatMessage>::read(const QUuid &id, Statement &row)
{
    ChatMessage::Columns columns;
    columns.id = id;
    columns.roleRaw = row.text(sharedTexts<MessageRole>());
    columns.sealedContent = row.text();
    columns.createdAt = row.date();
    columns.statusRaw = row.text(sharedTexts<MessageStatus>());
    columns.sealedErrorMessage = row.optionalText();
    columns.attachmentID = row.optionalId();
    columns.sealedAttachmentName = row.optionalText();
    columns.sealedToolSummary = row.optionalText();
    columns.sourceDomains = row.optionalList();
    columns.hitTokenLimit = row.optionalFlag();
    columns.placeRaw = row.optionalText();
    columns.conversation = row.optionalId();
    return columns;
}

void RecordTable<ChatMessage>::bind(Statement &statement, const ChatMessage::Columns &columns)
{
    statement.bind(value(columns.id))
        .bind(value(columns.roleRaw))
        .bind(value(columns.sealedContent))
        .bind(value(columns.createdAt))
        .bind(value(columns.statusRaw))
        .bind(value(columns.sealedErrorMessage))
        .bind(value(columns.attachmentID))
        .bind(value(columns.sealedAttachmentName))
        .bind(value(columns.sealedToolSummary))
        .bind(value(columns.sourceDomains))
        .bind(value(columns.hitTokenLimit))
        .bind(value(columns.placeRaw))
        .bind(value(columns.conversation));
}

ImportedDocument::Columns RecordTable<ImportedDocument>::read(const QUuid &id, Statement &row)
{
    ImportedDocument::Columns columns;
    columns.id = id;
    columns.sealedFilename = row.text();
    columns.fileExtension = row.text();
    columns.fileSizeBytes = row.integer();
    columns.extractedCharacterCount = row.integer();
    columns.wasTruncated = row.flag();
    columns.importedAt = row.date();
    return columns;
}

void RecordTable<ImportedDocument>::bind(Statement &statement, const ImportedDocument::Columns &columns)
{
    statement.bind(value(columns.id))
        .bind(value(columns.sealedFilename))
        .bind(value(columns.fileExtension))
        .bind(value(columns.fileSizeBytes))
        .bind(value(columns.extractedCharacterCount))
        .bind(value(columns.wasTruncated))
        .bind(value(columns.importedAt));
}

} // namespace morvane
