#include "view_models/chat/GhostChat.h"

#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "persistence/PersistenceController.h"

namespace morvane {

GhostChat::GhostChat(std::shared_ptr<const FieldSealing> sealing, Clock &clock)
    : persistence(PersistenceController::inMemory(std::move(sealing)))
    , repository(std::make_unique<ConversationRepository>(persistence->mainContext(), clock))
    , conversation(repository->create())
{}

GhostChat::~GhostChat() = default;
GhostChat::GhostChat(GhostChat &&) noexcept = default;

// Not member by member: the repository is made on the store, and goes before it.
GhostChat &GhostChat::operator=(GhostChat &&other) noexcept
{
    conversation = std::move(other.conversation);
    repository = std::move(other.repository);
    persistence = std::move(other.persistence);
    return *this;
}

} // namespace morvane
