#include "view_models/chat/MessageDesk.h"

#include "models/MessageVersions.h"
#include "persistence/ConversationRepository.h"
#include "view_models/chat/BannerDesk.h"
#include "view_models/chat/ChatStores.h"
#include "view_models/chat/TurnHistory.h"

#include <algorithm>

namespace morvane {

namespace {

// What its messages brought into a chat stays with it, also when they go.
void keepMarks(Conversation &conversation, ConversationRepository &repository)
{
    const SensitiveDataSet carried = TurnHistory::carriedBy({}, conversation, repository);
    if (carried.testFlag(SensitiveData::screenText))
        conversation.noteScreenText();
    if (carried.testFlag(SensitiveData::image))
        conversation.notePicture();
}

} // namespace

MessageDesk::MessageDesk(ChatStores &stores, BannerDesk &banner, QObject *parent)
    : QObject(parent)
    , m_stores(stores)
    , m_banner(banner)
{}

template <typename Change>
void MessageDesk::saving(Change change)
{
    try {
        change();
    } catch (...) {
        m_banner.show(std::current_exception(), ErrorBanner::Retry::save);
    }
    Q_EMIT transcriptChanged();
}

void MessageDesk::remove(const ChatMessage &message, std::shared_ptr<Conversation> conversation)
{
    const auto going = MessageVersions::standingWith(*conversation, message);
    if (going.empty())
        return;
    m_conversation = std::move(conversation);
    m_before = m_conversation->messages();
    keepMarks(*m_conversation, m_stores.active());
    saving([&] { m_stores.active().remove(going, *m_conversation); });
    setDeletedCount(
        static_cast<int>(std::ranges::count_if(going, [](const auto &gone) { return !gone->isSetAside(); })));
}

void MessageDesk::undo()
{
    if (m_deletedCount == 0)
        return;
    saving([this] { m_stores.active().putBack(m_before, *m_conversation); });
    forgetDeleted();
}

void MessageDesk::forgetDeleted()
{
    m_conversation.reset();
    m_before.clear();
    setDeletedCount(0);
}

void MessageDesk::setDeletedCount(int count)
{
    if (std::exchange(m_deletedCount, count) != count)
        Q_EMIT deletedChanged();
}

void MessageDesk::step(const ChatMessage &reply, int distance, const Conversation &conversation)
{
    const auto versions = MessageVersions::of(conversation, reply);
    const auto at = std::ranges::find(versions, reply.id(), &ChatMessage::id) - versions.begin() + distance;
    if (at < 0 || at >= std::ssize(versions) || distance == 0)
        return;
    saving([&] {
        MessageVersions::choose(conversation, *versions[static_cast<std::size_t>(at)]);
        m_stores.active().save();
    });
}

} // namespace morvane
