#include "view_models/chat/ChatViewModel.h"

#include "ai/routing/AIRequestRouter.h"
#include "ai/routing/LocalModelServing.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "persistence/SettingsStore.h"
#include "utils/text/Text.h"
#include "view_models/chat/ApprovalWords.h"
#include "view_models/chat/ChatTurn.h"
#include "view_models/companion/CompanionViewModel.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

ChatViewModel::ChatViewModel(Services services, QObject *parent)
    : QObject(parent)
    , m_services(std::move(services))
    , m_proofs(m_services.proofs)
    , m_messages(m_services.clock, m_proofs)
    , m_proofPanel(m_proofs, m_messages)
    , m_approvals(m_services.clock)
    , m_banner(m_services.companion)
    , m_entries({.settings = m_services.settings,
                 .router = m_services.router,
                 .banner = m_banner,
                 .companion = m_services.companion,
                 .clock = m_services.clock,
                 .documents = m_services.documents,
                 .screen = m_services.screen,
                 .capture = m_services.capture,
                 .clipboard = m_services.clipboard,
                 .isResponding = [this] { return m_isResponding; }})
    , m_stores(m_services.repository, m_services.clock)
    , m_open(m_services.repository, m_banner)
    , m_ghosts({.stores = m_stores,
                .open = m_open,
                .banner = m_banner,
                .isAtWork = [this](const Conversation &conversation) { return isAtWork(conversation); },
                .endTurns = [this] { endTurns(); },
                .isLocked = m_services.isLocked})
    , m_drafts(m_stores, m_services.clock)
    , m_desk(m_stores, m_banner)
    , m_reader({m_services.settings, m_services.companion, m_banner, m_messages, m_services.speech,
                [this] { return m_entries.voice()->isRecording(); }})
    , m_delivery({m_services.companion, m_reader, m_services.notifications})
    , m_planner(std::make_unique<TurnPlanner>(
          TurnPlanner::Services{m_stores, m_messages, m_banner, m_services.clock}))
{
    connect(&m_approvals, &ApprovalDesk::pendingChanged, this, &ChatViewModel::approvalChanged);
    connect(&m_approvals, &ApprovalDesk::needsAttention, this, [this](const ApprovalRequest &request) {
        m_delivery.tellApproval(request.verb);
        Q_EMIT needsAttention();
    });
    connect(&m_approvals, &ApprovalDesk::resolved, this, [this] {
        m_delivery.withdrawApproval();
        Q_EMIT approvalResolved();
    });
    connect(m_entries.attachments(), &AttachmentDesk::changed, this, &ChatViewModel::canSendChanged);
    connect(&m_entries, &ComposerEntries::suggested, this, [this](const QString &words) {
        if (!m_draft.contains(words)) // from a former look
            addToDraft(words);
    });
    connect(&m_entries, &ComposerEntries::said, this, [this](const QString &words) {
        addToDraft(words);
        if (m_services.settings.autoSendTranscription())
            send();
    });
    connect(m_entries.voice(), &VoiceEntry::recordingChanged, this, [this] {
        if (m_entries.voice()->isRecording())
            m_reader.stop(); // or the microphone would hear it
    });
    connect(this, &ChatViewModel::conversationChanged, this, [this] {
        const auto open = m_open.current();
        m_delivery.setOpenChat(open && !m_stores.isGhost(*open) ? open->id() : QUuid());
    });
    connect(&m_banner, &BannerDesk::changed, this, &ChatViewModel::bannerChanged);
    connect(&m_desk, &MessageDesk::transcriptChanged, this, &ChatViewModel::refreshMessages);
    connect(&m_desk, &MessageDesk::deletedChanged, this, &ChatViewModel::deletedChanged);
    connect(&m_open, &OpenConversation::leaving, this, &ChatViewModel::stopResponding);
    connect(&m_open, &OpenConversation::leaving, this, [this] { m_drafts.write(); });
    connect(&m_open, &OpenConversation::opened, this, &ChatViewModel::showOpened);
    connect(&m_open, &OpenConversation::renamed, this, &ChatViewModel::conversationChanged);
    connect(&m_open, &OpenConversation::removed, &m_delivery, &ReplyDelivery::withdrawChat);
    connect(&m_open, &OpenConversation::listChanged, this, &ChatViewModel::conversationsChanged);
    connect(this, &ChatViewModel::conversationsChanged, &m_ghosts, &GhostDesk::changed);
    connect(&m_ghosts, &GhostDesk::retired, this, [this](bool wasDropped) {
        m_delivery.withdrawGhosts();
        if (!wasDropped)
            return;
        m_planner->forgetAttachment();
        stopVoice();
    });
    connect(&m_services.router, &AIRequestRouter::sourceChanged, this, &ChatViewModel::sourceChanged);
    if (m_services.localModel)
        connect(m_services.localModel, &LocalModelServing::restarted, this, &ChatViewModel::modelRestarted);
    m_banner.setAsksLocalRuntime([this] {
        return m_services.localModel && m_services.router.chatSource().kind == ChatSource::Kind::thisMac &&
               m_services.settings.baseURLString() == m_services.localModel->baseURL();
    });
}

ChatViewModel::~ChatViewModel() = default;

void ChatViewModel::setDraft(const QString &draft)
{
    if (m_draft == draft)
        return;
    if (m_draft.isEmpty())
        m_services.router.lookAhead();
    showDraft(draft);
    if (!isEditing())
        m_drafts.note(m_draftOwner, draft);
}

void ChatViewModel::showDraft(const QString &draft)
{
    if (m_draft == draft)
        return;
    m_draft = draft;
    Q_EMIT draftChanged();
    Q_EMIT canSendChanged();
}

void ChatViewModel::stopVoice()
{
    m_entries.voice()->cancel();
    m_reader.stop();
}

void ChatViewModel::showPermissionProblem(const UserPresentableError &error)
{
    m_banner.show(ErrorBanner{.message = error.userMessage(),
                              .suggestion = error.recoverySuggestion().value_or(QString()),
                              .recovery = ErrorBanner::Recovery::openAbilities});
}

void ChatViewModel::restartLocalModel()
{
    if (!m_services.localModel)
        return;
    m_banner.dismiss();
    m_isRestartingModel = true;
    m_services.localModel->restart();
}

void ChatViewModel::modelRestarted(bool good)
{
    if (!std::exchange(m_isRestartingModel, false) || good)
        return;
    m_banner.show({.message = u"Local AI didn't start back up."_s,
                   .suggestion = u"Open Settings → AI and press Set Up Free Local AI to repair it."_s});
}

void ChatViewModel::noteTyping()
{
    m_typedAt = m_services.clock.elapsed();
}

bool ChatViewModel::isWriting() const
{
    constexpr std::chrono::seconds pause{1};
    return !m_draft.isEmpty() || (m_typedAt && m_services.clock.elapsed() - *m_typedAt < pause);
}

bool ChatViewModel::canSend() const
{
    const AttachmentDesk &attachments = *m_entries.attachments();
    return !m_isResponding && !attachments.isReading() &&
           (attachments.pending() || !Text::trimmed(m_draft).isEmpty());
}

void ChatViewModel::quote(const QString &words)
{
    QString draft = Text::trimmed(m_draft);
    draft += draft.isEmpty() ? QString() : u"\n\n"_s;
    draft += u"> "_s + QString(words).replace(u'\n', u"\n> "_s) + u"\n\n"_s;
    setDraft(draft);
    Q_EMIT quoted();
}

void ChatViewModel::addToDraft(const QString &words)
{
    const bool needsGap = !m_draft.isEmpty() && !m_draft.back().isSpace();
    setDraft(m_draft + (needsGap ? u" "_s : QString()) + words);
}

QString ChatViewModel::lastAnswer() const
{
    const auto &all = m_messages.messages();
    for (auto message = all.rbegin(); message != all.rend(); ++message) {
        if ((*message)->role() != MessageRole::assistant)
            continue;
        if (const QString text = m_messages.plainTextOf(**message); !text.isEmpty())
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
    return m_services.router.isConfigured();
}

const std::map<QUuid, QUuid> &ChatViewModel::attestationRows() const
{
    return m_proofs.rows();
}

void ChatViewModel::newConversation()
{
    m_ghosts.leave([this] { m_open.openNew(); });
}

void ChatViewModel::open(const QString &id)
{
    if (m_open.canOpen(id))
        m_ghosts.leave([this, id] { m_open.open(id); });
}

void ChatViewModel::showOpened(OpenConversation::Composer composer)
{
    m_banner.dismiss();
    m_desk.forgetDeleted();
    if (composer == OpenConversation::Composer::stays) {
        moveDraft();
    } else {
        m_entries.leaveChat();
        bringDraft();
    }
    refreshMessages();
    Q_EMIT conversationChanged();
}

void ChatViewModel::bringDraft()
{
    setEdited({});
    // What was written while there was no chat is the first one's.
    const bool brought = !std::exchange(m_draftOwner, m_open.current()) && !m_draft.isEmpty();
    if (brought)
        m_drafts.note(m_draftOwner, m_draft);
    else
        showDraft(m_draftOwner ? m_draftOwner->draft() : QString());
}

// Into a Ghost chat, so that no store has it any more, and with a Ghost chat that is kept. Out of one that is
// not, the words only stay in the composer: whoever goes on writing there has it stored.
void ChatViewModel::moveDraft()
{
    const auto former = std::exchange(m_draftOwner, m_open.current());
    const bool isSameChat = former && former->id() == m_draftOwner->id();
    const QString draft = isEditing() ? former->draft() : m_draft;
    if (former)
        m_drafts.forget(*former);
    if (isSameChat || m_stores.isGhost(*m_draftOwner))
        m_drafts.note(m_draftOwner, draft);
}

void ChatViewModel::refreshMessages()
{
    const bool isShown = m_open.current() && !m_isConcealed;
    m_messages.setMessages(isShown ? m_open.current()->transcript() : Conversation::Messages());
}

// What is done to messages

// Null when there is none, or while a turn runs.
std::shared_ptr<ChatMessage> ChatViewModel::idleMessage(const QString &id) const
{
    const auto &messages = m_messages.messages();
    const auto found = std::ranges::find(messages, QUuid(id), &ChatMessage::id);
    return m_isResponding || found == messages.end() ? nullptr : *found;
}

void ChatViewModel::regenerate()
{
    if (m_isResponding)
        return;
    cancelEdit();
    makeWay();
    if (auto plan = m_planner->regenerating(m_open.current()))
        startTurn(std::move(*plan));
}

void ChatViewModel::showVersion(const QString &replyId, int distance)
{
    const auto reply = idleMessage(replyId);
    if (!reply)
        return;
    cancelEdit();
    m_desk.step(*reply, distance, *m_open.current());
}

void ChatViewModel::beginEdit(const QString &messageId)
{
    const auto message = idleMessage(messageId);
    if (!message || message != m_planner->lastQuestion())
        return;
    if (!isEditing())
        m_drafts.write();
    showDraft(m_messages.textOf(*message));
    setEdited(message->id());
}

void ChatViewModel::cancelEdit()
{
    if (!isEditing())
        return;
    showDraft(m_draftOwner->draft());
    setEdited({});
}

void ChatViewModel::setEdited(const QUuid &message)
{
    if (std::exchange(m_edited, message) != message)
        Q_EMIT isEditingChanged();
}

void ChatViewModel::deleteMessage(const QString &messageId)
{
    const auto message = idleMessage(messageId);
    if (!message)
        return;
    cancelEdit();
    const QString title = this->title();
    m_desk.remove(*message, m_open.current());
    tellTitle(title);
}

void ChatViewModel::undoDelete()
{
    const QString title = this->title();
    m_desk.undo();
    tellTitle(title);
}

// Words that come and go may have been the title.
void ChatViewModel::tellTitle(const QString &former)
{
    if (title() != former)
        Q_EMIT conversationChanged();
    Q_EMIT conversationsChanged();
}

// Approvals

QCoro::Task<ApprovalAnswer> ChatViewModel::requestApproval(QString verb, AIToolCall call,
                                                           bool offersChatWideYes)
{
    const bool ownKey = m_services.searchesWithOwnKey && m_services.searchesWithOwnKey();
    ApprovalRequest request;
    request.id = QUuid::createUuid();
    request.verb = std::move(verb);
    request.detail = ApprovalWords::detail(call, m_services.clock.now(), m_services.notesMatching);
    request.footnote = ApprovalWords::footnote(call, ownKey);
    request.call = std::move(call);
    request.offersChatWideYes = offersChatWideYes;
    return m_approvals.request(std::move(request));
}

} // namespace morvane
