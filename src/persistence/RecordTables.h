#pragma once

#include "models/Conversation.h"
#include "models/ImportedDocument.h"
#include "persistence/Statement.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <type_traits>

namespace morvane {

// How the text of a column has been kept.
enum class Keeping { SealedFromTheStart };

// A column of a record's table: what it is called, and the field of the row that it holds. Its SQL type
// follows from the field's, and an optional field may be absent.
template <typename Row, typename Value>
struct RecordColumn {
    using Texts = std::span<const QString> (*)();

    const char *name;
    Value Row::*field;
    const char *formerName = nullptr; // from before its text was sealed
    Texts sharedTexts = nullptr;      // for a text that has few values: those
    bool sealedFromTheStart = false;

    constexpr RecordColumn(const char *called, Value Row::*holds, const char *formerly = nullptr)
        : name(called)
        , field(holds)
        , formerName(formerly)
    {}
    constexpr RecordColumn(const char *called, Value Row::*holds, Texts shared)
        : name(called)
        , field(holds)
        , sharedTexts(shared)
    {}
    constexpr RecordColumn(const char *called, Value Row::*holds, Keeping)
        : name(called)
        , field(holds)
        , sealedFromTheStart(true)
    {}

    static constexpr bool isText =
        std::is_same_v<Value, QString> || std::is_same_v<Value, std::optional<QString>>;

    [[nodiscard]] constexpr bool isSealed() const { return sealedFromTheStart || formerName; }
};

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

// How each record type stands in its table. Columns are named here and nowhere else; the id is the first.
template <typename R>
struct RecordTable;

inline constexpr const char *idColumn = "id";

template <>
struct RecordTable<Conversation> {
    using Row = Conversation::Columns;
    static constexpr RecordKind kind = RecordKind::Conversation;
    static constexpr const char *name = "Conversation";
    static constexpr std::tuple columns{
        RecordColumn(idColumn, &Row::id),
        RecordColumn("sealedTitle", &Row::sealedTitle, "title"),
        RecordColumn("createdAt", &Row::createdAt),
        RecordColumn("updatedAt", &Row::updatedAt),
        RecordColumn("sealedRollingSummary", &Row::sealedRollingSummary, "rollingSummary"),
        RecordColumn("personaPreset", &Row::personaPreset),
        RecordColumn("spaceRaw", &Row::spaceRaw),
        RecordColumn("carriesScreenText", &Row::carriesScreenText),
        RecordColumn("sealedDraft", &Row::sealedDraft, Keeping::SealedFromTheStart),
        RecordColumn("carriesPicture", &Row::carriesPicture),
    };
};

template <>
struct RecordTable<ChatMessage> {
    using Row = ChatMessage::Columns;
    static constexpr RecordKind kind = RecordKind::ChatMessage;
    static constexpr const char *name = "ChatMessage";
    static constexpr std::tuple columns{
        RecordColumn(idColumn, &Row::id),
        RecordColumn("roleRaw", &Row::roleRaw, sharedTexts<MessageRole>),
        RecordColumn("sealedContent", &Row::sealedContent, "content"),
        RecordColumn("createdAt", &Row::createdAt),
        RecordColumn("statusRaw", &Row::statusRaw, sharedTexts<MessageStatus>),
        RecordColumn("sealedErrorMessage", &Row::sealedErrorMessage, "errorMessage"),
        RecordColumn("attachmentID", &Row::attachmentID),
        RecordColumn("sealedAttachmentName", &Row::sealedAttachmentName, "attachmentName"),
        RecordColumn("sealedToolSummary", &Row::sealedToolSummary, "toolSummary"),
        RecordColumn("sourceDomains", &Row::sourceDomains),
        RecordColumn("hitTokenLimit", &Row::hitTokenLimit),
        RecordColumn("placeRaw", &Row::placeRaw),
        RecordColumn("conversation", &Row::conversation),
        RecordColumn("toolStates", &Row::toolStates),
        RecordColumn("versionGroup", &Row::versionGroup),
        RecordColumn("answers", &Row::answers),
        RecordColumn("isSetAside", &Row::isSetAside),
        RecordColumn("sealedToolDetails", &Row::sealedToolDetails, Keeping::SealedFromTheStart),
    };
};

template <>
struct RecordTable<ImportedDocument> {
    using Row = ImportedDocument::Columns;
    static constexpr RecordKind kind = RecordKind::ImportedDocument;
    static constexpr const char *name = "ImportedDocument";
    static constexpr std::tuple columns{
        RecordColumn(idColumn, &Row::id),
        RecordColumn("sealedFilename", &Row::sealedFilename, "filename"),
        RecordColumn("fileExtension", &Row::fileExtension),
        RecordColumn("fileSizeBytes", &Row::fileSizeBytes),
        RecordColumn("extractedCharacterCount", &Row::extractedCharacterCount),
        RecordColumn("wasTruncated", &Row::wasTruncated),
        RecordColumn("importedAt", &Row::importedAt),
    };
};

// Calls `visit` with each column, in the order of the table.
template <typename R, typename Visit>
constexpr void forEachColumn(Visit visit)
{
    std::apply([&](const auto &...column) { (visit(column), ...); }, RecordTable<R>::columns);
}

// The name of the column that holds a field. A field that has none does not compile.
template <typename R, typename Value>
consteval const char *columnName(Value R::Columns::*field)
{
    using Field = Value R::Columns::*;
    const char *name = nullptr;
    forEachColumn<R>([&](const auto &column) {
        if constexpr (std::is_same_v<decltype(column.field), Field>) {
            if (column.field == field)
                name = column.name;
        }
    });
    return name ? name : throw "no column holds this field";
}

template <typename R>
[[nodiscard]] QByteArrayList columnNames()
{
    QByteArrayList names;
    forEachColumn<R>([&](const auto &column) { names.append(column.name); });
    return names;
}

// The rest of a row whose columns are those of the table, in its order. The id has been read.
template <typename R>
[[nodiscard]] typename R::Columns readRow(const QUuid &id, Statement &row);

// Binds each column, in the order of the table.
template <typename R>
void bindRow(Statement &statement, const typename R::Columns &columns);

} // namespace morvane
