#pragma once

#include "models/ChatMessage.h"

#include <vector>

namespace morvane {

// One chat. Its messages are loaded from the store when they are first asked for.
class Conversation final : public Record {
public:
    using Messages = std::vector<std::shared_ptr<ChatMessage>>;

    // What a conversation is called until its first message gives it a title.
    [[nodiscard]] static QString untitled();

    // The row as it is stored.
    struct Columns {
        QUuid id;
        QString sealedTitle;
        QDateTime createdAt;
        QDateTime updatedAt;
        std::optional<QString> sealedRollingSummary;
        std::optional<QString> personaPreset;
        std::optional<QString> spaceRaw;
        std::optional<bool> carriesScreenText; // absent in rows from before the field
        std::optional<QString> sealedDraft;    // what the person has begun to write; absent for nothing
        std::optional<bool> carriesPicture;    // absent in rows from before the field

        bool operator==(const Columns &) const = default;
    };

    // A new conversation in readable form; it was last changed when it was created.
    struct Creation {
        QUuid id;
        QString title;
        QDateTime createdAt;
        std::optional<QString> rollingSummary;
        std::optional<QString> personaPreset;
        std::optional<QString> spaceRaw;
    };

    Conversation(std::shared_ptr<const FieldSealing> sealing, Columns columns);

    // Seals the texts at once.
    [[nodiscard]] static std::shared_ptr<Conversation> create(std::shared_ptr<const FieldSealing> sealing,
                                                              const Creation &fields);

    [[nodiscard]] const Columns &columns() const { return m_columns; }

    [[nodiscard]] QString title() const { return opened(m_columns.sealedTitle); }
    void setTitle(const QString &text) { assignSealed(m_columns.sealedTitle, text); }

    [[nodiscard]] const QDateTime &createdAt() const { return m_columns.createdAt; }
    [[nodiscard]] const QDateTime &updatedAt() const { return m_columns.updatedAt; }
    void setUpdatedAt(const QDateTime &date) { assign(m_columns.updatedAt, date); }

    [[nodiscard]] std::optional<QString> rollingSummary() const
    {
        return opened(m_columns.sealedRollingSummary);
    }
    void setRollingSummary(const std::optional<QString> &text)
    {
        assignSealed(m_columns.sealedRollingSummary, text);
    }

    // What holds for all of this chat is kept under this name: approvals, and what can be undone in it.
    [[nodiscard]] QString scopeKey() const;

    // Text from the screen has come into this chat. For good, whatever goes from its messages.
    [[nodiscard]] bool carriesScreenText() const { return m_columns.carriesScreenText.value_or(false); }
    void noteScreenText() { assign(m_columns.carriesScreenText, std::optional(true)); }

    // The same of a picture.
    [[nodiscard]] bool carriesPicture() const { return m_columns.carriesPicture.value_or(false); }
    void notePicture() { assign(m_columns.carriesPicture, std::optional(true)); }

    // What the person has begun to write here; empty for nothing.
    [[nodiscard]] QString draft() const { return opened(m_columns.sealedDraft).value_or(QString()); }
    void setDraft(const QString &text)
    {
        assignSealed(m_columns.sealedDraft, text.isEmpty() ? std::nullopt : std::optional(text));
    }

    // In the order they were added, versions that are set aside included. What is shown and sent is the
    // transcript().
    [[nodiscard]] const Messages &messages() const;

    // By creation time; messages of the same moment stay in the order they were added.
    [[nodiscard]] Messages orderedMessages() const;

    // The same without what is set aside.
    [[nodiscard]] Messages transcript() const;

    // Does not load the messages.
    [[nodiscard]] bool isEmpty() const;

    // For the context and the repository only: the message must be, or be about to be, in the same context.
    void append(const std::shared_ptr<ChatMessage> &message);
    void forget(const ChatMessage &message);

    // Seals what a build from before sealing left readable.
    void sealPlainTexts();

private:
    Columns m_columns;
    mutable std::optional<Messages> m_messages; // nothing until first asked for
};

} // namespace morvane
