#include "models/Conversation.h"

#include "models/RecordContext.h"
#include "utils/text/Identifier.h"

#include <algorithm>

namespace morvane {

Conversation::Conversation(std::shared_ptr<const FieldSealing> sealing, Columns columns)
    : Record(RecordKind::Conversation, columns.id, std::move(sealing))
    , m_columns(std::move(columns))
{}

QString Conversation::untitled()
{
    return QStringLiteral("New Conversation");
}

std::shared_ptr<Conversation> Conversation::create(std::shared_ptr<const FieldSealing> sealing,
                                                   const Creation &fields)
{
    Columns columns;
    columns.id = fields.id;
    columns.sealedTitle = sealedAtCreation(*sealing, fields.title);
    columns.createdAt = fields.createdAt;
    columns.updatedAt = fields.createdAt;
    columns.sealedRollingSummary = sealedAtCreation(*sealing, fields.rollingSummary);
    columns.personaPreset = fields.personaPreset;
    columns.spaceRaw = fields.spaceRaw;
    return std::make_shared<Conversation>(std::move(sealing), std::move(columns));
}

QString Conversation::scopeKey() const
{
    return QStringLiteral("chat:") + Identifier::text(id());
}

const Conversation::Messages &Conversation::messages() const
{
    static const Messages none;
    if (!m_messages && context())
        m_messages = context()->messagesOf(*this); // still nothing when the store cannot be read
    return m_messages ? *m_messages : none;
}

Conversation::Messages Conversation::orderedMessages() const
{
    Messages ordered = messages();
    const auto isEarlier = [](const auto &left, const auto &right) {
        return left->createdAt() < right->createdAt();
    };
    if (!std::ranges::is_sorted(ordered, isEarlier)) // as it is for every chat but one that a clock upset
        std::ranges::stable_sort(ordered, isEarlier);
    return ordered;
}

Conversation::Messages Conversation::transcript() const
{
    Messages shown = orderedMessages();
    std::erase_if(shown, [](const auto &message) { return message->isSetAside(); });
    return shown;
}

bool Conversation::isEmpty() const
{
    if (m_messages)
        return m_messages->empty();
    return !context() || !context()->hasMessages(*this);
}

void Conversation::append(const std::shared_ptr<ChatMessage> &message)
{
    (void)messages(); // those already stored come first
    if (!m_messages)
        m_messages.emplace();
    message->setConversationID(id());
    m_messages->push_back(message);
}

void Conversation::forget(const ChatMessage &message)
{
    if (m_messages)
        std::erase_if(*m_messages, [&](const auto &held) { return held.get() == &message; });
}

void Conversation::sealPlainTexts()
{
    sealIfPlain(m_columns.sealedTitle);
    sealIfPlain(m_columns.sealedRollingSummary);
    sealIfPlain(m_columns.sealedDraft);
}

} // namespace morvane
