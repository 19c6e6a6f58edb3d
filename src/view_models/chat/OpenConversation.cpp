#include "view_models/chat/OpenConversation.h"

#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "utils/text/Identifier.h"
#include "view_models/chat/BannerDesk.h"

namespace morvane {

OpenConversation::OpenConversation(ConversationRepository &repository, BannerDesk &banner, QObject *parent)
    : QObject(parent)
    , m_repository(repository)
    , m_banner(banner)
{}

QString OpenConversation::title() const
{
    return m_current ? m_current->title() : QString();
}

QString OpenConversation::id() const
{
    return m_current ? Identifier::text(m_current->id()) : QString();
}

void OpenConversation::openAtStart()
{
    if (auto remembered = m_repository.find(QUuid(m_remembered)))
        return set(std::move(remembered));
    auto newest = m_repository.mostRecent();
    if (newest && newest->isEmpty())
        set(std::move(newest));
    else
        openNew();
}

void OpenConversation::openNew(Composer composer)
{
    Q_EMIT leaving();
    auto conversation = m_repository.mostRecent();
    try {
        if (!conversation || !conversation->isEmpty())
            conversation = m_repository.create();
    } catch (...) {
        m_banner.show(std::current_exception(), ErrorBanner::Retry::newChat);
        return;
    }
    set(std::move(conversation), composer);
}

void OpenConversation::open(const QString &id)
{
    if (!canOpen(id))
        return;
    Q_EMIT leaving();
    set(m_repository.find(QUuid(id)));
}

// Nothing is left behind for a chat that has gone.
bool OpenConversation::canOpen(const QString &id) const
{
    return this->id() != id && m_repository.find(QUuid(id));
}

void OpenConversation::show(std::shared_ptr<Conversation> conversation, Composer composer)
{
    if (composer == Composer::ofChat)
        Q_EMIT leaving();
    set(std::move(conversation), composer);
}

void OpenConversation::close()
{
    Q_EMIT leaving();
    set(nullptr);
}

void OpenConversation::remove(const QString &id)
{
    const auto conversation = m_repository.find(QUuid(id));
    if (!conversation)
        return;
    const bool wasOpen = conversation == m_current;
    if (wasOpen)
        Q_EMIT leaving();
    try {
        m_repository.remove(*conversation);
    } catch (...) {
        m_banner.show(std::current_exception(), ErrorBanner::Retry::save);
        return;
    }
    Q_EMIT removed(conversation->id());
    if (wasOpen)
        openNew();
    Q_EMIT listChanged();
}

void OpenConversation::rename(const QString &id, const QString &title)
{
    const auto conversation = m_repository.find(QUuid(id));
    if (!conversation)
        return;
    try {
        m_repository.rename(*conversation, title);
    } catch (...) {
        m_banner.show(std::current_exception(), ErrorBanner::Retry::save);
    }
    Q_EMIT listChanged();
    if (conversation == m_current)
        Q_EMIT renamed();
}

void OpenConversation::set(std::shared_ptr<Conversation> conversation, Composer composer)
{
    m_current = std::move(conversation);
    Q_EMIT opened(composer);
    Q_EMIT listChanged();
}

} // namespace morvane
