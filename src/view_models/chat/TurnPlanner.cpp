#include "view_models/chat/TurnPlanner.h"

#include "models/Conversation.h"
#include "models/ImportedDocument.h"
#include "models/MessageVersions.h"
#include "persistence/ConversationRepository.h"
#include "utils/text/Text.h"
#include "view_models/chat/BannerDesk.h"
#include "view_models/chat/ChatStores.h"
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
    const auto question = makeQuestion(words, attachment);
    add({question}, *conversation);
    if (attachment)
        addDocument(*attachment);
    m_lastAttachment = attachment;
    const auto reply = makeReply(*question);
    add({reply}, *conversation);
    auto history = TurnHistory::of(m_services.messages, reply.get());
    if (attachment)
        TurnHistory::attach(history, *attachment, words);
    return {reply, std::move(conversation), std::move(history), words};
}

std::optional<TurnPlan> TurnPlanner::retrying(std::shared_ptr<Conversation> conversation)
{
    const auto question = lastQuestion();
    if (!question || !isBroken(*m_services.messages.messages().back()))
        return std::nullopt;
    TurnPlan plan;
    plan.userWords = question->content();
    const auto broken = m_services.messages.messages().back();
    broken->setErrorMessage(std::nullopt);
    m_services.messages.messageChanged(broken->id());
    plan.history = TurnHistory::of(m_services.messages, broken.get());
    if (const auto attachment = attachmentOf(*question))
        TurnHistory::attach(plan.history, *attachment, plan.userWords);
    for (const auto &message : repliesBelow(*question)) {
        if (isWordless(*message))
            plan.standsInFor.push_back(message);
    }
    plan.reply = makeReply(*question, broken->versionGroup());
    add({plan.reply}, *conversation);
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

std::optional<TurnPlan> TurnPlanner::regenerating(std::shared_ptr<Conversation> conversation)
{
    const auto question = lastQuestion();
    if (!question)
        return std::nullopt;
    const auto former = m_services.messages.messages().back();
    if (former->knownRole() != MessageRole::assistant || isBroken(*former))
        return std::nullopt;
    const auto reply = makeReply(*question, MessageVersions::groupOf(*former));
    former->setAnswers(question->id());
    former->setSetAside(true);
    add({reply}, *conversation);
    const QString words = question->content();
    auto history = TurnHistory::upTo(m_services.messages, *question);
    if (const auto attachment = attachmentOf(*question))
        TurnHistory::attach(history, *attachment, words);
    return TurnPlan{reply, std::move(conversation), std::move(history), words};
}

std::optional<TurnPlan> TurnPlanner::editing(const QUuid &message, const QString &text,
                                             std::shared_ptr<Conversation> conversation)
{
    const auto former = lastQuestion();
    if (!former || former->id() != message)
        return std::nullopt;
    const Messages turn = repliesBelow(*former);
    TurnPlan plan;
    plan.userWords = text;
    if (std::ranges::all_of(turn, [this](const auto &reply) { return isWordless(*reply); })) {
        plan.standsInFor = turn;
        plan.standsInFor.push_back(former);
    }
    untitleIfFirst(*former, *conversation);
    const auto attachment = attachmentOf(*former);
    const Groups groups = setAside(former, turn);
    const auto question = makeQuestion(text, attachment, groups.question);
    plan.reply = makeReply(*question, groups.reply);
    add({question, plan.reply}, *conversation);
    plan.history = TurnHistory::of(m_services.messages, plan.reply.get());
    if (attachment)
        TurnHistory::attach(plan.history, *attachment, text);
    plan.conversation = std::move(conversation);
    return plan;
}

// Failed, or left unfinished by a program that ended.
bool TurnPlanner::isBroken(const ChatMessage &message) const
{
    return message.knownRole() == MessageRole::assistant &&
           (message.status() == MessageStatus::failed || m_services.messages.isInterrupted(message));
}

// Broken without a word. A text that can't be opened reads as an empty one, but its sealed form is longer.
bool TurnPlanner::isWordless(const ChatMessage &message) const
{
    const auto empty = m_services.stores.active().makeMessage({.content = {}});
    return isBroken(message) && message.content().isEmpty() &&
           message.sealedContent().size() <= empty->sealedContent().size();
}

// The last message of the person; null for none.
std::shared_ptr<ChatMessage> TurnPlanner::lastQuestion() const
{
    const auto &messages = m_services.messages.messages();
    const auto found = std::find_if(messages.rbegin(), messages.rend(),
                                    [](const auto &message) { return message->role() == MessageRole::user; });
    return found == messages.rend() ? nullptr : *found;
}

// What is shown below a question.
TurnPlanner::Messages TurnPlanner::repliesBelow(const ChatMessage &question) const
{
    const auto &messages = m_services.messages.messages();
    const auto asked = std::ranges::find(messages, question.id(), &ChatMessage::id);
    return asked == messages.end() ? Messages() : Messages(asked + 1, messages.end());
}

TurnPlanner::Groups TurnPlanner::setAside(const std::shared_ptr<ChatMessage> &question,
                                          const Messages &replies)
{
    if (replies.empty()) {
        m_services.stores.active().context().remove(*question);
        return {};
    }
    for (const auto &reply : replies) {
        reply->setAnswers(question->id());
        reply->setSetAside(true);
    }
    question->setSetAside(true);
    return {MessageVersions::groupOf(*question), MessageVersions::groupOf(*replies.back())};
}

// So that a chat that was called by the words of its first message is called by the new ones.
void TurnPlanner::untitleIfFirst(const ChatMessage &question, Conversation &conversation) const
{
    const auto &messages = m_services.messages.messages();
    const auto first = std::ranges::find(messages, MessageRole::user, &ChatMessage::role);
    if (first != messages.end() && first->get() == &question &&
        ConversationRepository::isTitledByFirstWords(conversation))
        conversation.setTitle(Conversation::untitled());
}

// Nothing for a file that was attached before this run of the program: only its name is known.
std::optional<ImportedAttachment> TurnPlanner::attachmentOf(const ChatMessage &question) const
{
    if (!m_lastAttachment || question.attachmentID() != m_lastAttachment->id)
        return std::nullopt;
    return m_lastAttachment;
}

std::shared_ptr<ChatMessage> TurnPlanner::makeQuestion(const QString &text,
                                                       const std::optional<ImportedAttachment> &attachment,
                                                       const std::optional<QUuid> &group) const
{
    ChatMessage::Creation fields{.id = QUuid::createUuid(),
                                 .role = MessageRole::user,
                                 .content = text,
                                 .createdAt = m_services.clock.now(),
                                 .status = MessageStatus::delivered,
                                 .versionGroup = group};
    if (attachment) {
        fields.attachmentID = attachment->id;
        fields.attachmentName = attachment->filename;
    }
    return m_services.stores.active().makeMessage(fields);
}

std::shared_ptr<ChatMessage> TurnPlanner::makeReply(const ChatMessage &question,
                                                    const std::optional<QUuid> &group) const
{
    return m_services.stores.active().makeMessage({.id = QUuid::createUuid(),
                                                   .role = MessageRole::assistant,
                                                   .content = {},
                                                   .createdAt = m_services.clock.now(),
                                                   .status = MessageStatus::pending,
                                                   .versionGroup = group,
                                                   .answers = question.id()});
}

void TurnPlanner::add(const Messages &messages, Conversation &conversation)
{
    try {
        m_services.stores.active().add(messages, conversation);
    } catch (...) {
        m_services.banner.show(std::current_exception(), ErrorBanner::Retry::save);
    }
    m_services.messages.setMessages(conversation.transcript());
}

void TurnPlanner::addDocument(const ImportedAttachment &attachment)
{
    try {
        m_services.stores.active().insert({.id = attachment.id,
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
