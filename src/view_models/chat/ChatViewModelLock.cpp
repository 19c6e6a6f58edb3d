// What the lock takes from the chat's screen, and gives back.

#include "view_models/chat/ChatViewModel.h"

#include "markdown/MarkdownRenderer.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "security/FieldSealing.h"
#include "view_models/chat/ReplyPorts.h"
#include "view_models/chat/SealedReading.h"
#include "view_models/chat/TurnPlanner.h"

namespace morvane {

// While the key is still there: what had arrived is sealed into its record, and so is what was being written.
void ChatViewModel::conceal()
{
    if (m_isConcealed)
        return;
    const FieldSealing &sealing = *m_stores.active().context().sealing();
    m_sealedReading = SealedReading::seal(m_entries.attachments()->unread(), sealing);
    if (const auto attached = m_entries.attachments()->release())
        m_sealedAttachment = SealedAttachment::seal(*attached, sealing);
    endTurns();
    m_banner.dismiss();
    m_proofPanel.close();
    m_planner->forgetAttachment();
    if (isEditing() || !m_draftOwner)
        m_sealedDraft = sealing.seal(m_draft).value_or(QString());
    m_isConcealed = true;
    showDraft({});
    refreshMessages();
    MarkdownRenderer::forgetBlocks();
    if (m_services.notifications)
        m_services.notifications->withdrawAll();
}

void ChatViewModel::reveal()
{
    if (!std::exchange(m_isConcealed, false))
        return;
    if (!m_open.current())
        m_open.openAtStart();
    refreshMessages();
    const FieldSealing &sealing = *m_stores.active().context().sealing();
    if (isEditing() || !m_draftOwner)
        showDraft(sealing.open(m_sealedDraft));
    else
        showDraft(m_draftOwner->draft());
    m_sealedDraft.clear();
    if (const auto kept = std::exchange(m_sealedAttachment, std::nullopt)) {
        if (const auto attachment = kept->open(sealing))
            m_entries.attachments()->hold(*attachment);
    }
    m_entries.attachments()->read(SealedReading::open(std::exchange(m_sealedReading, {}), sealing));
    Q_EMIT conversationChanged();
    Q_EMIT conversationsChanged();
}

} // namespace morvane
