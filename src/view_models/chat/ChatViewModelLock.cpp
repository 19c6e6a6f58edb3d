// What the lock takes from the chat's screen, and gives back.

#include "view_models/chat/ChatViewModel.h"

#include "markdown/MarkdownRenderer.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "security/FieldSealing.h"
#include "view_models/chat/ReplyPorts.h"
#include "view_models/chat/TurnPlanner.h"

namespace morvane {

// While the key is still there: what had arrived is sealed into its record, and so is what was being written.
void ChatViewModel::conceal()
{
    if (m_isConcealed)
        return;
    endTurns();
    m_banner.dismiss();
    m_proofPanel.close();
    m_planner->forgetAttachment();
    if (isEditing() || !m_draftOwner)
        m_sealedDraft = m_stores.active().context().sealing()->seal(m_draft).value_or(QString());
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
    if (isEditing() || !m_draftOwner)
        showDraft(m_stores.active().context().sealing()->open(m_sealedDraft));
    else
        showDraft(m_draftOwner->draft());
    m_sealedDraft.clear();
    Q_EMIT conversationChanged();
    Q_EMIT conversationsChanged();
}

} // namespace morvane
