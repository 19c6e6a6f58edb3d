#include "view_models/chat/ReplyDelivery.h"

#include "models/Conversation.h"
#include "utils/text/UserPresentableError.h"
#include "view_models/chat/ReplyPorts.h"
#include "view_models/chat/ReplyReader.h"
#include "view_models/companion/CompanionViewModel.h"

namespace morvane {

using namespace std::chrono_literals;

ReplyDelivery::ReplyDelivery(Services services, QObject *parent)
    : QObject(parent)
    , m_services(services)
{}

void ReplyDelivery::setWindowInFront(bool inFront)
{
    m_isWindowInFront = inFront;
    if (inFront)
        withdrawApproval(); // the card itself is in view
    withdrawRead();
}

void ReplyDelivery::setOpenChat(const QUuid &conversation)
{
    m_openChat = conversation;
    withdrawRead();
}

void ReplyDelivery::withdrawRead()
{
    if (m_isWindowInFront && !m_openChat.isNull())
        withdrawChat(m_openChat);
}

void ReplyDelivery::deliver(const ChatMessage &reply, const Conversation &conversation, Kind kind)
{
    if (!m_services.reader.readFinished(reply))
        m_services.companion.reset();
    if (m_isWindowInFront)
        return;
    m_services.companion.flash(CompanionState::notification, 2s);
    if (!m_services.notifications)
        return;
    if (kind == Kind::ghost)
        m_services.notifications->ghostReplyReady();
    else
        m_services.notifications->replyReady(conversation.id(), conversation.title());
}

void ReplyDelivery::tellFailure(const std::exception_ptr &error, const Conversation &conversation, Kind kind)
{
    if (m_isWindowInFront || !m_services.notifications)
        return;
    const ErrorPresentation words = presentationOf(error);
    const QString suggestion = words.suggestion.value_or(QString());
    if (kind == Kind::ghost)
        m_services.notifications->ghostReplyFailed(words.message, suggestion);
    else
        m_services.notifications->replyFailed(conversation.id(), words.message, suggestion);
}

void ReplyDelivery::withdrawChat(const QUuid &conversation)
{
    if (m_services.notifications)
        m_services.notifications->withdrawChat(conversation);
}

void ReplyDelivery::withdrawGhosts()
{
    if (m_services.notifications)
        m_services.notifications->withdrawGhostReplies();
}

void ReplyDelivery::tellApproval(const QString &verb)
{
    if (!m_isWindowInFront && m_services.notifications)
        m_services.notifications->approvalWaits(verb);
}

void ReplyDelivery::withdrawApproval()
{
    if (m_services.notifications)
        m_services.notifications->withdrawApproval();
}

} // namespace morvane
