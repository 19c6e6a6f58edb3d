#include "view_models/chat/ChatTurn.h"

#include "ai/agent/ReplyRunner.h"
#include "ai/contract/ProviderError.h"
#include "attestation/ProofLedger.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "persistence/SettingsStore.h"
#include "utils/text/Identifier.h"
#include "view_models/chat/ReplyPorts.h"
#include "view_models/chat/TurnRecorder.h"
#include "view_models/companion/CompanionViewModel.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Signal = ReplyIndicator::Signal;

bool isProviderCancellation(const std::exception_ptr &error)
{
    try {
        std::rethrow_exception(error);
    } catch (const ProviderError &provider) {
        return provider.is(ProviderError::Plain::cancelled);
    } catch (...) {
        return false;
    }
}

bool isRuntimeCancellation(const std::exception_ptr &error)
{
    try {
        std::rethrow_exception(error);
    } catch (const CancelledError &) {
        return true;
    } catch (...) {
        return false;
    }
}

Signal::Kind endingOf(MessageStatus status)
{
    switch (status) {
    case MessageStatus::failed:
        return Signal::Kind::failed;
    case MessageStatus::cancelled:
        return Signal::Kind::cancelled;
    case MessageStatus::pending:
    case MessageStatus::streaming:
    case MessageStatus::delivered:
        return Signal::Kind::finished;
    }
    return Signal::Kind::finished;
}

} // namespace

void ChatViewModel::startTurn(Turn turn)
{
    turn.number = ++m_latestTurn;
    setResponding(true);
    m_services.companion.transition(CompanionState::thinking);
    m_responseTask = TaskHandle::start([this, &turn](std::stop_token stop) {
        return runTurn(QPointer(this), std::move(turn), std::move(stop));
    });
}

QCoro::Task<> ChatViewModel::runTurn(QPointer<ChatViewModel> self, Turn turn, std::stop_token stop)
{
    self->beginTurn(turn);
    std::exception_ptr failure;
    try {
        co_await streamReply(self, turn, stop);
    } catch (...) {
        failure = std::current_exception();
    }
    if (!self)
        co_return;
    if (stop.stop_requested())
        self->cancelTurn(turn);
    else if (failure)
        self->failTurn(turn, failure);
    else
        self->completeTurn(turn);
    self->endTurn(turn);
}

QCoro::Task<> ChatViewModel::streamReply(QPointer<ChatViewModel> self, Turn turn, std::stop_token stop)
{
    AsyncStream<AgentEvent> events = co_await openReply(self, turn, stop);
    throwIfStopped(stop); // also when the controller is gone
    turn.reply->setStatus(MessageStatus::streaming);
    TurnRecorder recorder(turn.reply, turn.isContinuation ? turn.reply->content() : QString(),
                          self->m_messages, self->m_services.companion, self->m_services.clock);
    std::exception_ptr failure;
    try {
        while (const auto event = co_await events.next(stop))
            recorder.apply(*event);
    } catch (...) {
        failure = std::current_exception();
    }
    if (!self)
        co_return;
    recorder.store(); // text that had arrived stays, however the turn ends
    if (failure)
        std::rethrow_exception(failure);
    if (recorder.text().isEmpty())
        throw ProviderError(ProviderError::Plain::emptyResponse);
}

QCoro::Task<AsyncStream<AgentEvent>> ChatViewModel::openReply(QPointer<ChatViewModel> self, Turn turn,
                                                              std::stop_token stop)
{
    AIRequestRouter &router = self->m_services.router;
    TurnRequest request;
    request.history = turn.history;
    request.rollingSummary = turn.conversation->rollingSummary();
    const TurnScope scope{u"chat:"_s + Identifier::text(turn.conversation->id()), turn.userWords};
    request.scopeKey = scope.key;
    request.carrying =
        TurnHistory::carriedBy(turn.history, turn.conversation->messages(), self->m_services.repository);
    if (turn.isContinuation)
        request.outputBudget = router.outputBudget();
    if (request.carrying) {
        co_await router.waitForLocalModel(stop);
        throwIfStopped(stop);
    }
    const std::optional<QString> visionModel = co_await router.visionModel(turn.history, stop);
    throwIfStopped(stop);
    request.visionModel = visionModel;
    if (!visionModel) {
        const std::optional<QString> toolsModel = co_await router.toolsModel(request.carrying, stop);
        throwIfStopped(stop);
        request.toolsModel = toolsModel;
    }
    PreparedRequest prepared = co_await router.prepareRequest(std::move(request), stop);
    throwIfStopped(stop);
    std::shared_ptr<AIProvider> provider = co_await router.provider(prepared.configuration, stop);
    throwIfStopped(stop);
    co_return self->m_services.replies.run(std::move(prepared), scope, std::move(provider));
}

void ChatViewModel::beginTurn(Turn &turn)
{
    ++m_turnsInFlight;
    m_messages.beginIndicator(turn.reply->id());
    for (const auto &entry : m_services.proofs.snapshot().entries)
        turn.formerProofs.insert(entry.id);
}

void ChatViewModel::completeTurn(const Turn &turn)
{
    turn.reply->setStatus(MessageStatus::delivered);
    deliver(turn);
    save();
}

void ChatViewModel::cancelTurn(const Turn &turn)
{
    turn.reply->setStatus(MessageStatus::cancelled);
    if (isCurrent(turn))
        m_services.companion.reset();
    save();
}

void ChatViewModel::failTurn(const Turn &turn, const std::exception_ptr &error)
{
    const ErrorPresentation words = presentationOf(error);
    const bool wasCancelled = isProviderCancellation(error);
    turn.reply->setStatus(wasCancelled || isRuntimeCancellation(error) ? MessageStatus::cancelled
                                                                       : MessageStatus::failed);
    turn.reply->setErrorMessage(words.message);
    save();
    if (wasCancelled) {
        m_services.companion.reset();
        return;
    }
    showError(error);
    if (!m_isWindowInFront && m_services.notifications)
        m_services.notifications->replyFailed(words.message, words.suggestion.value_or(QString()));
}

void ChatViewModel::deliver(const Turn &turn)
{
    const SettingsStore &settings = m_services.settings;
    CompanionViewModel &companion = m_services.companion;
    if (settings.voiceOutputEnabled() && m_services.speech) {
        companion.transition(CompanionState::speaking);
        const QPointer self(this);
        const QString text = m_messages.textOf(*turn.reply);
        m_speechTask = TaskHandle::start([self, text, &settings](std::stop_token stop) {
            return speakReply(self, text, settings.voiceIdentifier(), settings.speakingRate(),
                              settings.speakCodeBlocks(), std::move(stop));
        });
    } else {
        companion.reset();
    }
    if (!m_isWindowInFront)
        notifyDelivered(turn);
}

QCoro::Task<> ChatViewModel::speakReply(QPointer<ChatViewModel> self, QString text,
                                        std::optional<QString> voice, double rate, bool speakCodeBlocks,
                                        std::stop_token stop)
{
    co_await self->m_services.speech->speak(std::move(text), std::move(voice), rate, speakCodeBlocks, stop);
    if (self && !stop.stop_requested())
        self->m_services.companion.reset();
}

void ChatViewModel::notifyDelivered(const Turn &turn)
{
    m_services.companion.flash(CompanionState::notification, 2s);
    if (m_services.notifications)
        m_services.notifications->replyReady(turn.conversation->id(), turn.conversation->title());
}

void ChatViewModel::endTurn(const Turn &turn)
{
    recordPlace(turn);
    refreshMessages();
    m_messages.signalIndicator(turn.reply->id(), {endingOf(turn.reply->status())});
    m_messages.messageChanged(turn.reply->id());
    if (isCurrent(turn)) {
        setResponding(false);
        m_approvals.resolve(ApprovalAnswer::declined);
    }
    --m_turnsInFlight;
    if (turn.reply->status() == MessageStatus::delivered)
        Q_EMIT replyFinished(m_messages.textOf(*turn.reply));
    Q_EMIT conversationsChanged();
}

void ChatViewModel::recordPlace(const Turn &turn)
{
    const auto rows = m_services.proofs.snapshot().entries;
    const auto newest = std::find_if(rows.rbegin(), rows.rend(), [&turn](const ProofLedger::Entry &entry) {
        return !turn.formerProofs.contains(entry.id);
    });
    if (newest == rows.rend())
        return;
    turn.reply->setPlaceRaw(newest->place.code());
    save();
    if (newest->attestation && newest->attestation != m_lastAttestation) {
        m_attestationRows[turn.reply->id()] = newest->id;
        m_lastAttestation = newest->attestation;
    }
}

bool ChatViewModel::isCurrent(const Turn &turn) const
{
    return turn.number == m_latestTurn;
}

} // namespace morvane
