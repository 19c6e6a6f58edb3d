#pragma once

#include "view_models/chat/GhostChat.h"

#include <functional>
#include <optional>
#include <vector>

namespace morvane {

// Which store a chat lives in: the saved ones in that of this machine, each Ghost chat in its own. There is
// at most one Ghost chat, and it is the open one while there is. GUI thread.
class ChatStores {
public:
    // Whether a turn writes into a chat.
    using IsAtWork = std::function<bool(const Conversation &)>;

    // Both outlive this object.
    ChatStores(ConversationRepository &saved, Clock &clock);

    [[nodiscard]] ConversationRepository &saved() const { return m_saved; }
    // Of the open chat.
    [[nodiscard]] ConversationRepository &active() const;
    [[nodiscard]] ConversationRepository &of(const Conversation &conversation) const;

    // The open one; null for none.
    [[nodiscard]] const GhostChat *ghost() const { return m_ghost ? &*m_ghost : nullptr; }
    // Also one that was left while its turn runs.
    [[nodiscard]] bool isGhost(const Conversation &conversation) const
    {
        return find(conversation) != nullptr;
    }
    // Those that were left.
    [[nodiscard]] std::size_t retiredCount() const { return m_retiredGhosts.size(); }

    // Instead of any former one. Throws PersistenceError, and then nothing is changed.
    const GhostChat &begin();
    // There is no Ghost chat any more. Its store stays as long as a turn writes into it.
    void retire(const IsAtWork &isAtWork);
    // Lets go of the stores whose turns have ended meanwhile.
    void release(const IsAtWork &isAtWork);

private:
    [[nodiscard]] const GhostChat *find(const Conversation &conversation) const;

    ConversationRepository &m_saved;
    Clock &m_clock;
    std::optional<GhostChat> m_ghost;
    std::vector<GhostChat> m_retiredGhosts;
};

} // namespace morvane
