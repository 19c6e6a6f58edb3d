// The turns of the open chat: what begins one, and what comes of it.

#include "view_models/chat/ChatViewModel.h"

#include "ai/routing/AIRequestRouter.h"
#include "markdown/MarkdownRenderer.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "utils/text/Text.h"
#include "view_models/chat/ChatTurn.h"
#include "view_models/companion/CompanionViewModel.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

// What begins a turn

// Without one to write to, a new one is tried; when there is no room for it the banner says so.
bool ChatViewModel::hasConversation()
{
    if (!m_open.current())
        m_open.openNew();
    return m_open.current() != nullptr;
}

void ChatViewModel::send()
{
    const auto attachment = m_entries.attachments()->pending(); // a chat that is opened now lets go of it
    if (!canSend() || !hasConversation())
        return;
    if (isEditing())
        return sendEdited();
    const QString text = takeDraft();
    m_entries.attachments()->clear();
    sendMessage(text, attachment);
}

QString ChatViewModel::takeDraft()
{
    QString text = Text::trimmed(m_draft);
    showDraft({});
    m_drafts.wipe(*m_open.current()); // saved with the message
    return text;
}

void ChatViewModel::perform(QuickAction action)
{
    const auto attachment = m_entries.attachments()->pending();
    if (!canSend() || isEditing() || !hasConversation())
        return;
    m_entries.attachments()->clear();
    const QString instruction = QuickActions::instructionOf(action);
    sendMessage(attachment ? instruction : instruction + u"\n\n"_s + takeDraft(), attachment);
}

void ChatViewModel::sendEdited()
{
    const QString text = Text::trimmed(m_draft);
    const QUuid edited = m_edited;
    if (text.isEmpty())
        return; // an attachment alone is no new words
    cancelEdit();
    makeWay();
    if (auto plan = m_planner->editing(edited, text, m_open.current()))
        startSent(std::move(*plan));
}

void ChatViewModel::sendMessage(const QString &text, const std::optional<ImportedAttachment> &attachment)
{
    if (!m_open.current())
        return;
    makeWay();
    startSent(m_planner->sending(text, attachment, m_open.current()));
}

// For a turn, before what it writes can fail.
void ChatViewModel::makeWay()
{
    m_banner.dismiss();
    m_reader.stop();
}

void ChatViewModel::startSent(TurnPlan plan)
{
    Q_EMIT conversationChanged(); // the first words gave it a title
    Q_EMIT conversationsChanged();
    Q_EMIT messageSent();
    startTurn(std::move(plan));
}

void ChatViewModel::retry()
{
    switch (m_banner.banner().value_or(ErrorBanner{}).retry) {
    case ErrorBanner::Retry::lastChatTurn:
        return retryLastTurn();
    case ErrorBanner::Retry::save:
        return save();
    case ErrorBanner::Retry::newChat:
        m_banner.dismiss();
        return m_open.openNew();
    case ErrorBanner::Retry::keepGhost:
        m_banner.dismiss();
        m_ghosts.keepGhost();
        return;
    case ErrorBanner::Retry::glance:
    case ErrorBanner::Retry::glanceAndSummarize:
        return glanceAgain();
    }
}

void ChatViewModel::glanceAgain()
{
    const bool summarizes = m_banner.banner()->retry == ErrorBanner::Retry::glanceAndSummarize;
    m_banner.dismiss();
    m_entries.glanceAtScreen(summarizes);
}

void ChatViewModel::save()
{
    m_banner.dismiss();
    try {
        m_stores.active().save();
    } catch (...) {
        m_banner.show(std::current_exception(), ErrorBanner::Retry::save);
    }
}

void ChatViewModel::retryLastTurn()
{
    if (m_isResponding)
        return;
    m_banner.dismiss();
    if (auto plan = m_planner->retrying(m_open.current()))
        startTurn(std::move(*plan));
}

void ChatViewModel::continueReply(const QString &messageId)
{
    if (m_isResponding)
        return;
    auto plan = m_planner->continuing(QUuid(messageId), m_open.current());
    if (!plan)
        return;
    m_banner.dismiss();
    startTurn(std::move(*plan));
}

// The turn at work

void ChatViewModel::startTurn(TurnPlan plan)
{
    plan.memoryAllowed = !m_stores.isGhost(*plan.conversation);
    m_turns.push_back(std::make_unique<ChatTurn>(ChatTurn::Services{m_stores.active(), m_services.router,
                                                                    m_services.replies, m_proofs, m_messages,
                                                                    m_services.companion, m_services.clock},
                                                 std::move(plan)));
    ChatTurn &turn = *m_turns.back();
    m_desk.forgetDeleted();
    m_latestTurn = &turn;
    connect(&turn, &ChatTurn::ended, this, [this, &turn] { turnEnded(turn); });
    setResponding(true);
    m_services.companion.transition(CompanionState::thinking);
    turn.start();
}

void ChatViewModel::stopResponding()
{
    if (m_latestTurn)
        m_latestTurn->stop();
    m_approvals.resolve(ApprovalAnswer::declined); // of a turn that is stopped by now: nothing follows
    setResponding(false);
    if (!m_reader.readingId().isEmpty())
        m_reader.stop();
    m_services.companion.reset();
}

bool ChatViewModel::isAtWork(const Conversation &conversation) const
{
    return std::ranges::any_of(
        m_turns, [&conversation](const auto &turn) { return &turn->conversation() == &conversation; });
}

void ChatViewModel::endTurns()
{
    m_entries.leaveChat();
    m_drafts.write();
    stopResponding();
    while (!m_turns.empty())
        m_turns.front()->stopNow(); // leaves the list as it ends
}

void ChatViewModel::turnEnded(ChatTurn &turn)
{
    refreshMessages();
    if (m_latestTurn == &turn) {
        setResponding(false);
        m_approvals.resolve(ApprovalAnswer::declined);
    }
    const auto ended = std::find_if(m_turns.begin(), m_turns.end(),
                                    [&turn](const auto &each) { return each.get() == &turn; });
    ended->release()->deleteLater(); // it is still on the stack
    m_turns.erase(ended);
    m_ghosts.turnEnded();
    tellEnding(turn);
    if (turn.saveError())
        m_banner.show(turn.saveError(), ErrorBanner::Retry::save);
    if (turn.ending() == ChatTurn::Ending::completed)
        Q_EMIT replyFinished(MarkdownRenderer::speakable(m_messages.textOf(turn.reply()),
                                                         MarkdownRenderer::CodeInSpeech::announced));
    Q_EMIT conversationsChanged();
}

void ChatViewModel::tellEnding(const ChatTurn &turn)
{
    const auto kind =
        m_stores.isGhost(turn.conversation()) ? ReplyDelivery::Kind::ghost : ReplyDelivery::Kind::saved;
    switch (turn.ending()) {
    case ChatTurn::Ending::completed:
        m_delivery.deliver(turn.reply(), turn.conversation(), kind);
        break;
    case ChatTurn::Ending::cancelled:
        if (m_latestTurn == &turn)
            m_services.companion.reset();
        break;
    case ChatTurn::Ending::failed:
        m_banner.show(turn.error());
        m_delivery.tellFailure(turn.error(), turn.conversation(), kind);
        break;
    }
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

} // namespace morvane
