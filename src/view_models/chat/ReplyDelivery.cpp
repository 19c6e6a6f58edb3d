#include "view_models/chat/ReplyDelivery.h"

#include "models/Conversation.h"
#include "persistence/SettingsStore.h"
#include "utils/text/UserPresentableError.h"
#include "view_models/chat/ReplyPorts.h"
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
}

void ReplyDelivery::deliver(const QString &text, const Conversation &conversation, Kind kind)
{
    const bool reads = m_services.speech && m_services.settings.voiceOutputEnabled();
    if (reads && !text.isEmpty()) {
        m_services.companion.transition(CompanionState::speaking);
        m_speaking = TaskHandle::start([self = QPointer(this), text](std::stop_token stop) {
            return speak(self, text, std::move(stop));
        });
    } else {
        m_services.companion.reset();
    }
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

QCoro::Task<> ReplyDelivery::speak(QPointer<ReplyDelivery> self, QString text, std::stop_token stop)
{
    const SettingsStore &settings = self->m_services.settings;
    std::optional<QString> voice = settings.voiceIdentifier();
    co_await self->m_services.speech->speak(std::move(text), std::move(voice), settings.speakingRate(),
                                            settings.speakCodeBlocks(), stop);
    if (self && !stop.stop_requested())
        self->m_services.companion.reset();
}

void ReplyDelivery::tellFailure(const std::exception_ptr &error, Kind kind)
{
    if (m_isWindowInFront || !m_services.notifications)
        return;
    const ErrorPresentation words = presentationOf(error);
    const QString suggestion = words.suggestion.value_or(QString());
    if (kind == Kind::ghost)
        m_services.notifications->ghostReplyFailed(words.message, suggestion);
    else
        m_services.notifications->replyFailed(words.message, suggestion);
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

void ReplyDelivery::stopSpeaking()
{
    if (!m_services.speech)
        return;
    if (m_speaking.isRunning())
        m_services.companion.reset();
    m_speaking = {}; // its end is none of the next turn's
    m_services.speech->stop();
}

} // namespace morvane
