#include "view_models/chat/ChatViewModel.h"

#include "models/Conversation.h"
#include "models/ImportedDocument.h"
#include "persistence/ConversationRepository.h"
#include "persistence/SettingsStore.h"
#include "utils/text/Identifier.h"
#include "utils/text/Text.h"
#include "view_models/chat/ApprovalWords.h"
#include "view_models/chat/ChatTurn.h"
#include "view_models/chat/ReplyPorts.h"
#include "view_models/companion/CompanionViewModel.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString continuePrompt = u"Continue your previous answer exactly where it stopped. Do not repeat "
                               u"anything you already wrote, do not "
                               "summarize it, just carry on."_s;

} // namespace

ChatViewModel::ChatViewModel(Services services, QObject *parent)
    : QObject(parent)
    , m_services(std::move(services))
    , m_messages(m_services.clock)
    , m_approvals(m_services.clock)
{
    connect(&m_approvals, &ApprovalDesk::pendingChanged, this, &ChatViewModel::approvalChanged);
    connect(&m_approvals, &ApprovalDesk::needsAttention, this, &ChatViewModel::needsAttention);
    connect(&m_approvals, &ApprovalDesk::resolved, this, &ChatViewModel::approvalResolved);
    connect(&m_services.router, &AIRequestRouter::sourceChanged, this, &ChatViewModel::sourceChanged);
}

ChatViewModel::~ChatViewModel() = default;

void ChatViewModel::setDraft(const QString &draft)
{
    if (m_draft == draft)
        return;
    m_draft = draft;
    Q_EMIT draftChanged();
    Q_EMIT canSendChanged();
}

bool ChatViewModel::canSend() const
{
    return !m_isResponding && (m_pendingAttachment || !Text::trimmed(m_draft).isEmpty());
}

void ChatViewModel::setPendingAttachment(std::optional<ImportedAttachment> attachment)
{
    m_pendingAttachment = std::move(attachment);
    Q_EMIT canSendChanged();
}

QString ChatViewModel::title() const
{
    return m_conversation ? m_conversation->title() : QString();
}

QString ChatViewModel::conversationId() const
{
    return m_conversation ? Identifier::text(m_conversation->id()) : QString();
}

QString ChatViewModel::lastAnswer() const
{
    const auto &all = m_messages.messages();
    for (auto message = all.rbegin(); message != all.rend(); ++message) {
        if ((*message)->role() != MessageRole::assistant)
            continue;
        if (const QString text = m_messages.textOf(**message); !text.isEmpty())
            return text;
    }
    return {};
}

QString ChatViewModel::sourceLabel() const
{
    return m_services.router.sourceLabel();
}

bool ChatViewModel::isConfigured() const
{
    const ChatSource source = m_services.router.chatSource();
    return source.kind == ChatSource::Kind::morvaneCloud ||
           (source.kind != ChatSource::Kind::notConfigured &&
            !Text::trimmed(m_services.settings.model()).isEmpty());
}

// Conversations

void ChatViewModel::openAtStart()
{
    auto newest = m_services.repository.mostRecent();
    if (newest && newest->isEmpty())
        setConversation(std::move(newest));
    else
        newConversation();
}

void ChatViewModel::newConversation()
{
    stopResponding();
    auto conversation = m_services.repository.mostRecent();
    try {
        if (!conversation || !conversation->isEmpty())
            conversation = m_services.repository.create();
    } catch (...) {
        showError(std::current_exception());
        return;
    }
    setConversation(std::move(conversation));
}

void ChatViewModel::open(const QString &id)
{
    if (conversationId() == id)
        return;
    stopResponding();
    if (auto conversation = m_services.repository.find(QUuid(id)))
        setConversation(std::move(conversation));
}

void ChatViewModel::remove(const QString &id)
{
    const auto conversation = m_services.repository.find(QUuid(id));
    if (!conversation)
        return;
    const bool wasOpen = conversation == m_conversation;
    if (wasOpen)
        stopResponding();
    try {
        m_services.repository.remove(*conversation);
    } catch (...) {
        showError(std::current_exception());
        return;
    }
    if (wasOpen)
        newConversation();
    Q_EMIT conversationsChanged();
}

void ChatViewModel::rename(const QString &id, const QString &title)
{
    const auto conversation = m_services.repository.find(QUuid(id));
    if (!conversation)
        return;
    try {
        m_services.repository.rename(*conversation, title);
    } catch (...) {
        showError(std::current_exception());
    }
    Q_EMIT conversationsChanged();
    if (conversation == m_conversation)
        Q_EMIT conversationChanged();
}

void ChatViewModel::setConversation(std::shared_ptr<Conversation> conversation)
{
    m_conversation = std::move(conversation);
    setPendingAttachment(std::nullopt);
    setBanner(std::nullopt);
    refreshMessages();
    Q_EMIT conversationChanged();
    Q_EMIT conversationsChanged();
}

void ChatViewModel::refreshMessages()
{
    m_messages.setMessages(m_conversation ? m_conversation->orderedMessages() : Conversation::Messages());
}

// Sending

void ChatViewModel::send()
{
    if (!canSend())
        return;
    const QString text = Text::trimmed(m_draft);
    const auto attachment = m_pendingAttachment;
    setDraft({});
    setPendingAttachment(std::nullopt);
    sendMessage(text, attachment);
}

void ChatViewModel::sendMessage(const QString &text, const std::optional<ImportedAttachment> &attachment)
{
    if (!m_conversation)
        return;
    setBanner(std::nullopt);
    if (m_services.speech)
        m_services.speech->stop();
    // Only an attachment may come without words.
    const QString body = text.isEmpty() ? u"Summarize this document."_s : text;
    addMessage(MessageRole::user, body, MessageStatus::delivered, attachment ? &*attachment : nullptr);
    if (attachment)
        addDocument(*attachment);
    refreshMessages();
    Q_EMIT messageSent();

    const auto reply = addMessage(MessageRole::assistant, {}, MessageStatus::pending);
    refreshMessages();
    auto history = TurnHistory::of(m_messages, reply.get());
    if (attachment)
        TurnHistory::attach(history, *attachment, body);
    startTurn(
        {.reply = reply, .conversation = m_conversation, .history = std::move(history), .userWords = body});
}

void ChatViewModel::retryLastTurn()
{
    if (m_isResponding)
        return;
    const auto &messages = m_messages.messages();
    const bool lastFailed = !messages.empty() && messages.back()->knownRole() == MessageRole::assistant &&
                            messages.back()->status() == MessageStatus::failed;
    const auto question = std::find_if(messages.rbegin(), messages.rend(), [](const auto &message) {
        return message->role() == MessageRole::user;
    });
    setBanner(std::nullopt);
    if (!lastFailed || question == messages.rend())
        return;
    const QString userWords = (*question)->content();
    const auto failed = messages.back();
    failed->setErrorMessage(std::nullopt);
    m_messages.messageChanged(failed->id());
    auto history = TurnHistory::of(m_messages, failed.get());
    const auto reply = addMessage(MessageRole::assistant, {}, MessageStatus::pending);
    refreshMessages();
    startTurn({.reply = reply,
               .conversation = m_conversation,
               .history = std::move(history),
               .userWords = userWords});
}

void ChatViewModel::continueReply(const QString &messageId)
{
    const auto &messages = m_messages.messages();
    const auto found =
        std::find_if(messages.begin(), messages.end(),
                     [id = QUuid(messageId)](const auto &message) { return message->id() == id; });
    if (m_isResponding || found == messages.end() || !(*found)->hitTokenLimit())
        return;
    auto message = *found; // the list may let go of it below
    message->setHitTokenLimit(false);
    m_messages.messageChanged(message->id());
    auto history = TurnHistory::upTo(m_messages, *message);
    history.push_back({MessageRole::user, continuePrompt, {}});
    setBanner(std::nullopt);
    startTurn({.reply = std::move(message),
               .conversation = m_conversation,
               .history = std::move(history),
               .userWords = continuePrompt,
               .isContinuation = true});
}

void ChatViewModel::stopResponding()
{
    m_approvals.resolve(ApprovalAnswer::declined);
    m_responseTask = {};
    setResponding(false);
    m_services.companion.reset();
}

std::shared_ptr<ChatMessage> ChatViewModel::addMessage(MessageRole role, const QString &text,
                                                       MessageStatus status,
                                                       const ImportedAttachment *attachment)
{
    ChatMessage::Creation fields{.id = QUuid::createUuid(),
                                 .role = role,
                                 .content = text,
                                 .createdAt = m_services.clock.now(),
                                 .status = status};
    if (attachment) {
        fields.attachmentID = attachment->id;
        fields.attachmentName = attachment->filename;
    }
    auto message = m_services.repository.makeMessage(fields);
    try {
        m_services.repository.add(message, *m_conversation);
    } catch (...) {
        showError(std::current_exception()); // the turn goes on; the message is kept for the next save
    }
    if (role == MessageRole::user) {
        Q_EMIT conversationChanged(); // the first words gave it a title
        Q_EMIT conversationsChanged();
    }
    return message;
}

void ChatViewModel::addDocument(const ImportedAttachment &attachment)
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
        showError(std::current_exception());
    }
}

// Approvals

QCoro::Task<ApprovalAnswer> ChatViewModel::requestApproval(QString verb, AIToolCall call,
                                                           bool offersChatWideYes)
{
    const bool ownKey = m_services.searchesWithOwnKey && m_services.searchesWithOwnKey();
    ApprovalRequest request;
    request.id = QUuid::createUuid();
    request.verb = std::move(verb);
    request.detail = ApprovalWords::detail(call);
    request.footnote = ApprovalWords::footnote(call, ownKey);
    request.call = std::move(call);
    request.offersChatWideYes = offersChatWideYes;
    return m_approvals.request(std::move(request));
}

void ChatViewModel::approve()
{
    resolveApproval(ApprovalAnswer::allowedOnce);
}

void ChatViewModel::approveForChat()
{
    resolveApproval(ApprovalAnswer::allowedForChat);
}

void ChatViewModel::decline()
{
    resolveApproval(ApprovalAnswer::declined);
}

// Errors

void ChatViewModel::showError(const std::exception_ptr &error)
{
    setBanner(ErrorBanner::of(presentationOf(error)));
    m_services.companion.flash(CompanionState::error, 2s);
}

void ChatViewModel::dismissBanner()
{
    setBanner(std::nullopt);
}

void ChatViewModel::setBanner(std::optional<ErrorBanner> banner)
{
    if (m_banner == banner)
        return;
    m_banner = std::move(banner);
    Q_EMIT bannerChanged();
}

void ChatViewModel::setResponding(bool responding)
{
    if (m_isResponding == responding)
        return;
    m_isResponding = responding;
    m_messages.setResponding(responding);
    Q_EMIT isRespondingChanged();
    Q_EMIT canSendChanged();
}

void ChatViewModel::save()
{
    try {
        m_services.repository.save();
    } catch (...) {
        showError(std::current_exception());
    }
}

} // namespace morvane
