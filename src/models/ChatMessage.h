#pragma once

#include "models/MessageRole.h"
#include "models/MessageStatus.h"
#include "models/Record.h"
#include "models/ToolDetail.h"
#include "models/ToolLineState.h"

#include <QDateTime>
#include <QList>
#include <QStringList>

namespace morvane {

class Conversation;
class ImportedDocument;

// One message of a chat. Texts are sealed; each read opens them anew, so a view keeps what it opened.
class ChatMessage final : public Record {
public:
    // The row as it is stored.
    struct Columns {
        QUuid id;
        QString roleRaw;
        QString sealedContent;
        QDateTime createdAt;
        QString statusRaw;
        std::optional<QString> sealedErrorMessage;
        std::optional<QUuid> attachmentID;
        std::optional<QString> sealedAttachmentName;
        std::optional<QString> sealedToolSummary;
        std::optional<QStringList> sourceDomains;
        std::optional<bool> hitTokenLimit; // absent in rows from before the field
        std::optional<QString> placeRaw;
        std::optional<QUuid> conversation;
        std::optional<QStringList> toolStates; // one for each line of the summary; absent in former rows
        std::optional<QUuid> versionGroup;     // of those that stand in for each other; absent for a sole one
        std::optional<QUuid> answers;          // the person's message; absent in former rows
        std::optional<bool> isSetAside;        // another version is shown in its place
        std::optional<QString> sealedToolDetails; // JSON, one for each line of the summary

        bool operator==(const Columns &) const = default;
    };

    // A new message in readable form.
    struct Creation {
        QUuid id;
        MessageRole role;
        QString content;
        QDateTime createdAt;
        MessageStatus status;
        std::optional<QUuid> attachmentID;
        std::optional<QString> attachmentName;
        std::optional<QUuid> versionGroup = {};
        std::optional<QUuid> answers = {};
    };

    ChatMessage(std::shared_ptr<const FieldSealing> sealing, Columns columns);

    // Seals the texts at once.
    [[nodiscard]] static std::shared_ptr<ChatMessage> create(std::shared_ptr<const FieldSealing> sealing,
                                                             const Creation &fields);

    [[nodiscard]] const Columns &columns() const { return m_columns; }

    // An unknown role reads as a user's.
    [[nodiscard]] MessageRole role() const { return knownRole().value_or(MessageRole::user); }
    [[nodiscard]] std::optional<MessageRole> knownRole() const
    {
        return fromRawText<MessageRole>(m_columns.roleRaw);
    }
    [[nodiscard]] const QString &roleRaw() const { return m_columns.roleRaw; }

    [[nodiscard]] QString content() const { return opened(m_columns.sealedContent); }
    void setContent(const QString &text) { assignSealed(m_columns.sealedContent, text); }
    [[nodiscard]] const QString &sealedContent() const { return m_columns.sealedContent; }

    [[nodiscard]] const QDateTime &createdAt() const { return m_columns.createdAt; }

    // An unknown status reads as delivered.
    [[nodiscard]] MessageStatus status() const;
    void setStatus(MessageStatus status) { assign(m_columns.statusRaw, rawText(status)); }
    [[nodiscard]] const QString &statusRaw() const { return m_columns.statusRaw; }

    [[nodiscard]] std::optional<QString> errorMessage() const { return opened(m_columns.sealedErrorMessage); }
    void setErrorMessage(const std::optional<QString> &text)
    {
        assignSealed(m_columns.sealedErrorMessage, text);
    }

    [[nodiscard]] const std::optional<QUuid> &attachmentID() const { return m_columns.attachmentID; }
    [[nodiscard]] std::optional<QString> attachmentName() const
    {
        return opened(m_columns.sealedAttachmentName);
    }
    void setAttachmentName(const std::optional<QString> &text)
    {
        assignSealed(m_columns.sealedAttachmentName, text);
    }

    // What abilities did during the reply, one line each, the last eight.
    [[nodiscard]] std::optional<QString> toolSummary() const { return opened(m_columns.sealedToolSummary); }
    void setToolSummary(const std::optional<QString> &text)
    {
        assignSealed(m_columns.sealedToolSummary, text);
    }
    void appendToolLine(const QString &line, ToolLineState state = ToolLineState::running,
                        const ToolDetail &detail = {});
    void replaceLastToolLine(const QString &line, ToolLineState state = ToolLineState::finished,
                             const ToolDetail &detail = {});
    // What is still running was stopped; the words stay.
    void stopToolLines();
    // The raw text of each line's state; empty where they aren't known, as in rows from before the field.
    [[nodiscard]] QStringList toolStates() const;
    // One for each line; empty where they aren't known.
    [[nodiscard]] QList<ToolDetail> toolDetails() const;

    [[nodiscard]] const std::optional<QStringList> &sourceDomains() const { return m_columns.sourceDomains; }
    void setSourceDomains(const std::optional<QStringList> &domains)
    {
        assign(m_columns.sourceDomains, domains);
    }

    [[nodiscard]] bool hitTokenLimit() const { return m_columns.hitTokenLimit.value_or(false); }
    void setHitTokenLimit(bool hit) { assign(m_columns.hitTokenLimit, std::optional(hit)); }

    [[nodiscard]] const std::optional<QString> &placeRaw() const { return m_columns.placeRaw; }
    void setPlaceRaw(const std::optional<QString> &place) { assign(m_columns.placeRaw, place); }

    // What was said in one place of a chat has versions, of which one is shown; see MessageVersions.
    [[nodiscard]] const std::optional<QUuid> &versionGroup() const { return m_columns.versionGroup; }
    void setVersionGroup(const QUuid &group) { assign(m_columns.versionGroup, std::optional(group)); }
    [[nodiscard]] const std::optional<QUuid> &answers() const { return m_columns.answers; }
    void setAnswers(const QUuid &question) { assign(m_columns.answers, std::optional(question)); }
    [[nodiscard]] bool isSetAside() const { return m_columns.isSetAside.value_or(false); }
    void setSetAside(bool aside)
    {
        if (aside != isSetAside())
            assign(m_columns.isSetAside, std::optional(aside));
    }

    // The owning conversation, looked up in the context; null outside one.
    [[nodiscard]] std::shared_ptr<Conversation> conversation() const;
    // The record of the attached file, looked up the same way.
    [[nodiscard]] std::shared_ptr<ImportedDocument> document() const;
    [[nodiscard]] const std::optional<QUuid> &conversationID() const { return m_columns.conversation; }
    void setConversationID(const std::optional<QUuid> &id) { assign(m_columns.conversation, id); }

    // Seals what a build from before sealing left readable.
    void sealPlainTexts();

private:
    [[nodiscard]] QStringList toolLines() const;
    void setToolLines(QStringList lines, QStringList states, QList<ToolDetail> details);

    Columns m_columns;
};

} // namespace morvane
