#include "view_models/chat/DraftKeeper.h"

#include "async/Clock.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "persistence/PersistenceError.h"
#include "view_models/chat/ChatStores.h"

namespace morvane {

DraftKeeper::DraftKeeper(ChatStores &stores, Clock &clock)
    : m_stores(stores)
    , m_clock(clock)
{}

DraftKeeper::~DraftKeeper() = default;

void DraftKeeper::note(const std::shared_ptr<Conversation> &conversation, const QString &text)
{
    if (m_noted != conversation)
        write();
    m_noted = conversation;
    m_text = text;
    if (m_noted && !m_due)
        m_due = m_clock.after(writeInterval, [this] { write(); });
}

void DraftKeeper::write()
{
    m_due.reset();
    const auto conversation = std::exchange(m_noted, nullptr);
    const QString text = std::exchange(m_text, {}); // stands nowhere readable once it is sealed
    if (!conversation || conversation->draft() == text)
        return;
    conversation->setDraft(text);
    save(*conversation);
}

void DraftKeeper::forget(Conversation &conversation)
{
    wipe(conversation);
    save(conversation);
}

void DraftKeeper::save(const Conversation &conversation)
{
    try {
        m_stores.of(conversation).save();
    } catch (const PersistenceError &) { // the log tells, and what matters more is told when it is sent
    }
}

void DraftKeeper::wipe(Conversation &conversation)
{
    m_due.reset();
    m_noted.reset();
    m_text.clear();
    conversation.setDraft({});
}

} // namespace morvane
