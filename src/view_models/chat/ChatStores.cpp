#include "view_models/chat/ChatStores.h"

#include "persistence/ConversationRepository.h"

#include <algorithm>

namespace morvane {

ChatStores::ChatStores(ConversationRepository &saved, Clock &clock)
    : m_saved(saved)
    , m_clock(clock)
{}

ConversationRepository &ChatStores::active() const
{
    return m_ghost ? *m_ghost->repository : m_saved;
}

ConversationRepository &ChatStores::of(const Conversation &conversation) const
{
    const GhostChat *ghost = find(conversation);
    return ghost ? *ghost->repository : m_saved;
}

const GhostChat *ChatStores::find(const Conversation &conversation) const
{
    const auto isOf = [&conversation](const GhostChat &ghost) {
        return ghost.conversation.get() == &conversation;
    };
    if (m_ghost && isOf(*m_ghost))
        return &*m_ghost;
    const auto retired = std::ranges::find_if(m_retiredGhosts, isOf);
    return retired == m_retiredGhosts.end() ? nullptr : &*retired;
}

const GhostChat &ChatStores::begin()
{
    return m_ghost.emplace(GhostChat(m_saved.context().sealing(), m_clock));
}

void ChatStores::retire(const IsAtWork &isAtWork)
{
    if (!m_ghost)
        return;
    m_retiredGhosts.push_back(std::move(*m_ghost));
    m_ghost.reset();
    release(isAtWork);
}

void ChatStores::release(const IsAtWork &isAtWork)
{
    std::erase_if(m_retiredGhosts,
                  [&isAtWork](const GhostChat &ghost) { return !isAtWork(*ghost.conversation); });
}

} // namespace morvane
