#include "view_models/chat/TurnPlanner.h"

#include "models/Conversation.h"
#include "models/ImportedDocument.h"
#include "persistence/ConversationRepository.h"
#include "utils/text/Text.h"
#include "view_models/chat/BannerDesk.h"
#include "view_models/chat/MessageListModel.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Never stored.
const QString continuePrompt = u"Continue your previous answer exactly where it stopped. Do not repeat "
                               u"anything you already wrote, do not "
                               "summarize it, just carry on."_s;

} // namespace

TurnPlan TurnPlanner::sending(const QString &text, const std::optional<ImportedAttachment> &attachment,
                              std::shared_ptr<Conversation> conversation)
{
    const QString words = text.isEmpty() ? u"Summarize this document."_s : text;
    addQuestion(words, attachment, *conversation);
    if (attachment)
        addDocument(*attachment);
    const auto reply = addReply(*conversation);
    auto history = TurnHistory::of(m_services.messages, reply.get());
    if (attachment)
        TurnHistory::attach(history, *attachment, words);
    return {reply, std::move(conversation), std::move(history), words};
}

std::optional<TurnPlan> TurnPlanner::retrying(std::shared_ptr<Conversation> conversation)
{
    const auto &messages = m_services.messages.messages();
    const auto question = std::find_if(messages.rbegin(), messages.rend(), [](const auto &message) {
        return message->role() == MessageRole::user;
    });
    if (messages.empty() || !isBroken(*messages.back()) || question == messages.rend())
        return std::nullopt;
    TurnPlan plan;
    plan.userWords = (*question)->content();
    const auto broken = messages.back();
    broken->setErrorMessage(std::nullopt);
    m_services.messages.messageChanged(broken->id());
    plan.history = TurnHistory::of(m_services.messages, broken.get());
    std::copy_if(question.base(), messages.end(), std::back_inserter(plan.standsInFor),
                 [this](const auto &message) { return isBroken(*message) && message->content().isEmpty(); });
    plan.reply = addReply(*conversation);
    // A text that can't be opened reads as an empty one, but its sealed form is longer.
    std::erase_if(plan.standsInFor, [empty = plan.reply->sealedContent().size()](const auto &message) {
        return message->sealedContent().size() > empty;
    });
    plan.conversation = std::move(conversation);
    return plan;
}

std::optional<TurnPlan> TurnPlanner::continuing(const QUuid &message,
                                                std::shared_ptr<Conversation> conversation)
{
    const auto &messages = m_services.messages.messages();
    const auto found = std::find_if(messages.begin(), messages.end(),
                                    [&message](const auto &each) { return each->id() == message; });
    if (found == messages.end() || !(*found)->hitTokenLimit())
        return std::nullopt;
    std::shared_ptr<ChatMessage> reply = *found;
    reply->setHitTokenLimit(false);
    m_services.messages.messageChanged(reply->id());
    auto history = TurnHistory::upTo(m_services.messages, *reply);
    history.push_back({MessageRole::user, continuePrompt, {}});
    return TurnPlan{std::move(reply), std::move(conversation), std::move(history), continuePrompt, true};
}

// Failed, or left unfinished by a program that ended.
bool TurnPlanner::isBroken(const ChatMessage &message) const
{
    return message.knownRole() == MessageRole::assistant &&
           (message.status() == MessageStatus::failed || m_services.messages.isInterrupted(message));
}

void TurnPlanner::addQuestion(const QString &text, const std::optional<ImportedAttachment> &attachment,
                              Conversation &conversation)
{
    ChatMessage::Creation fields{.id = QUuid::createUuid(),
                                 .role = MessageRole::user,
                                 .content = text,
                                 .createdAt = m_services.clock.now(),
                                 .status = MessageStatus::delivered};
    if (attachment) {
        fields.attachmentID = attachment->id;
        fields.attachmentName = attachment->filename;
    }
    add(m_services.repository.makeMessage(fields), conversation);
}

std::shared_ptr<ChatMessage> TurnPlanner::addReply(Conversation &conversation)
{
    auto reply = m_services.repository.makeMessage({.id = QUuid::createUuid(),
                                                    .role = MessageRole::assistant,
                                                    .content = {},
                                                    .createdAt = m_services.clock.now(),
                                                    .status = MessageStatus::pending});
    add(reply, conversation);
    return reply;
}

void TurnPlanner::add(const std::shared_ptr<ChatMessage> &message, Conversation &conversation)
{
    try {
        m_services.repository.add(message, conversation);
    } catch (...) {
        m_services.banner.show(std::current_exception(), ErrorBanner::Retry::save);
    }
    m_services.messages.setMessages(conversation.orderedMessages());
}

void TurnPlanner::addDocument(const ImportedAttachment &attachment)
{
    try {
        m_services.repository.insert({.id = attachment.id,
                                      .filename = attachment.filename,
                                      .fileExtension = attachment.fileExtension,
                                      .fileSizeBytes = attachment.fileSizeBytes,
                                      .extractedCharacterCount = Text::characterCount(attachment.text),
                                      .wasTruncated = attachment.wasTruncated,
                                      .importedAt = m_services.clock.now()});
    } catch (...) {
        m_services.banner.show(std::current_exception(), ErrorBanner::Retry::save);
    }
}

} // namespace morvane
