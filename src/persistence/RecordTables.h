#pragma once

#include "models/Conversation.h"
#include "models/ImportedDocument.h"
#include "persistence/Statement.h"

namespace morvane {

// How each record type stands in its table. `columns` names every column in the order in which `bind` gives
// them and `read` takes them; the id is the first, and is read before.
template <typename R>
struct RecordTable;

template <>
struct RecordTable<Conversation> {
    static constexpr RecordKind kind = RecordKind::Conversation;
    static constexpr QByteArrayView name{"Conversation"};
    static constexpr QByteArrayView columns{
        "id,sealedTitle,createdAt,updatedAt,sealedRollingSummary,personaPreset,spaceRaw"};
    [[nodiscard]] static Conversation::Columns read(const QUuid &id, Statement &row);
    static void bind(Statement &statement, const Conversation::Columns &columns);
};

template <>
struct RecordTable<ChatMessage> {
    static constexpr RecordKind kind = RecordKind::ChatMessage;
    static constexpr QByteArrayView name{"ChatMessage"};
    static constexpr QByteArrayView columns{
        "id,roleRaw,sealedContent,createdAt,statusRaw,sealedErrorMessage,attachmentID,sealedAttachmentName,"
        "sealedToolSummary,sourceDomains,hitTokenLimit,placeRaw,conversation"};
    [[nodiscard]] static ChatMessage::Columns read(const QUuid &id, Statement &row);
    static void bind(Statement &statement, const ChatMessage::Columns &columns);
};

template <>
struct RecordTable<ImportedDocument> {
    static constexpr RecordKind kind = RecordKind::ImportedDocument;
    static constexpr QByteArrayView name{"ImportedDocument"};
    static constexpr QByteArrayView columns{
        "id,sealedFilename,fileExtension,fileSizeBytes,extractedCharacterCount,wasTruncated,importedAt"};
    [[nodiscard]] static ImportedDocument::Columns read(const QUuid &id, Statement &row);
    static void bind(Statement &statement, const ImportedDocument::Columns &columns);
};

} // namespace morvane
