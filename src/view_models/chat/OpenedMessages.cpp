#include "view_models/chat/OpenedMessages.h"

#include "models/ChatMessage.h"
#include "utils/text/ThinkingTags.h"

#include <utility>

namespace morvane {

namespace {

// What a person wrote is theirs, tags and all.
ThinkingTags::Parts partsOf(const ChatMessage &message)
{
    QString content = message.content();
    if (message.role() != MessageRole::assistant)
        return {.thinking = {}, .answer = std::move(content)};
    return ThinkingTags::split(content, message.status() == MessageStatus::streaming
                                            ? ThinkingTags::Extent::growing
                                            : ThinkingTags::Extent::whole);
}

OpenedMessages::Texts textsOf(const ChatMessage &message)
{
    auto [thinking, answer, isOpen] = partsOf(message);
    if (isOpen && message.status() == MessageStatus::streaming)
        thinking.clear(); // the indicator says so until it is over
    return {.text = std::move(answer),
            .thinking = std::move(thinking),
            .error = message.errorMessage().value_or(QString()),
            .attachmentName = message.attachmentName().value_or(QString()),
            .toolLines = message.toolSummary().value_or(QString()).split(u'\n', Qt::SkipEmptyParts),
            .toolStates = message.toolStates()};
}

} // namespace

const OpenedMessages::Texts &OpenedMessages::of(const ChatMessage &message)
{
    const auto found = m_opened.find(message.id());
    if (found != m_opened.end() && found->second.revision == message.revision())
        return found->second.texts;
    Opened fresh{.revision = message.revision(), .texts = textsOf(message)};
    return m_opened.insert_or_assign(message.id(), std::move(fresh)).first->second.texts;
}

} // namespace morvane
