#include "view_models/chat/ReplyReader.h"

#include "audio/SpeechOutputting.h"
#include "models/ChatMessage.h"
#include "persistence/SettingsStore.h"
#include "utils/text/Identifier.h"
#include "utils/text/UserPresentableError.h"
#include "view_models/chat/BannerDesk.h"
#include "view_models/chat/MessageListModel.h"
#include "view_models/companion/CompanionViewModel.h"

#include <algorithm>

namespace morvane {

ReplyReader::ReplyReader(Services services, QObject *parent)
    : QObject(parent)
    , m_services(services)
{}

void ReplyReader::toggle(const QString &messageId)
{
    const auto &all = m_services.messages.messages();
    const auto found = std::ranges::find(all, QUuid(messageId), &ChatMessage::id);
    const bool isAtIt = messageId == m_readingId;
    stop();
    if (!isAtIt && isAvailable() && found != all.end())
        read(**found, Asked::byThePerson);
}

bool ReplyReader::readFinished(const ChatMessage &reply)
{
    if (!isAvailable() || !m_services.settings.voiceOutputEnabled() ||
        m_services.messages.textOf(reply).isEmpty() || (m_services.isListening && m_services.isListening()))
        return false;
    read(reply, Asked::byTheSettings);
    return true;
}

void ReplyReader::read(const ChatMessage &reply, Asked asked)
{
    m_services.companion.transition(CompanionState::speaking);
    setReading(Identifier::text(reply.id()));
    m_speaking =
        TaskHandle::start([self = QPointer(this), text = m_services.messages.textOf(reply), asked](
                              std::stop_token stop) { return speak(self, text, asked, std::move(stop)); });
}

QCoro::Task<> ReplyReader::speak(QPointer<ReplyReader> self, QString text, Asked asked, std::stop_token stop)
{
    const SettingsStore &settings = self->m_services.settings;
    std::exception_ptr failure;
    try {
        std::optional<QString> voice = settings.voiceIdentifier();
        co_await self->m_services.speech->speak(std::move(text), std::move(voice), settings.speakingRate(),
                                                settings.speakCodeBlocks(), stop);
    } catch (const UserPresentableError &) {
        failure = std::current_exception();
    }
    if (!self || stop.stop_requested())
        co_return;
    self->m_services.companion.reset();
    self->setReading({});
    // A machine without a loudspeaker is no news at the end of each reply.
    if (failure && asked == Asked::byThePerson)
        self->m_services.banner.show(failure);
}

void ReplyReader::stop()
{
    if (!isAvailable())
        return;
    if (m_speaking.isRunning())
        m_services.companion.reset();
    m_speaking = {}; // its end is none of what comes next
    m_services.speech->stop();
    setReading({});
}

void ReplyReader::setReading(const QString &messageId)
{
    if (m_readingId == messageId)
        return;
    m_readingId = messageId;
    Q_EMIT readingChanged();
}

} // namespace morvane
