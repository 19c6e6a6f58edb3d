#pragma once

#include <memory>

namespace morvane {

class Clock;
class Conversation;
class ConversationRepository;
class FieldSealing;
class PersistenceController;

// A chat that no disk sees: it lives in a store of its own in memory, and is gone with it. Its texts are
// sealed there as in any record. GUI thread.
struct GhostChat {
    std::unique_ptr<PersistenceController> persistence;
    std::unique_ptr<ConversationRepository> repository;
    std::shared_ptr<Conversation> conversation;

    // Without a message. Throws PersistenceError when there is no room for it.
    GhostChat(std::shared_ptr<const FieldSealing> sealing, Clock &clock);
    ~GhostChat();
    GhostChat(GhostChat &&) noexcept;
    GhostChat &operator=(GhostChat &&) noexcept;
};

} // namespace morvane
