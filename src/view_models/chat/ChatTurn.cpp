#include "view_models/chat/ChatTurn.h"

#include "ai/agent/ReplyRunner.h"
#include "ai/contract/ProviderError.h"
#include "ai/routing/AIRequestRouter.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "view_models/chat/AnswerProofs.h"
#include "view_models/chat/MessageListModel.h"
#include "view_models/chat/ToolLabels.h"

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Signal = ReplyIndicator::Signal;

enum class Failure {
    providerCancelled, // a stop that came through the provider
    runtimeCancelled,  // the work went away under the turn, which nobody asked for
    other,
};

Failure kindOf(const std::exception_ptr &error)
{
    try {
        std::rethrow_exception(error);
    } catch (const ProviderError &provider) {
        return provider.is(ProviderError::Plain::cancelled) ? Failure::providerCancelled : Failure::other;
    } catch (const CancelledError &) {
        return Failure::runtimeCancelled;
    } catch (...) {
        return Failure::other;
    }
}

Signal::Kind indicatorEnding(MessageStatus status)
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

ChatTurn::ChatTurn(Services services, TurnPlan plan)
    : m_services(services)
    , m_plan(std::move(plan))
{}

ChatTurn::~ChatTurn() = default;

void ChatTurn::start()
{
    m_services.messages.beginIndicator(m_plan.reply->id());
    m_task = TaskHandle::start(
        [self = QPointer(this)](std::stop_token stop) { return run(self, std::move(stop)); });
}

void ChatTurn::stopNow()
{
    stop();
    end(true, nullptr);
}

QCoro::Task<> ChatTurn::run(QPointer<ChatTurn> self, std::stop_token stop)
{
    std::exception_ptr failure;
    try {
        OpenedTurn opened = co_await self->open(stop);
        throwIfStopped(stop); // also when the turn is gone
        AsyncStream<AgentEvent> events = self->begin(std::move(opened));
        while (const auto event = co_await events.next(stop))
            self->take(*event);
        self->requireText();
    } catch (...) {
        failure = std::current_exception();
    }
    if (self)
        self->end(stop.stop_requested(), failure);
}

QCoro::Task<OpenedTurn> ChatTurn::open(std::stop_token stop)
{
    TurnRequest request;
    request.history = m_plan.history;
    request.rollingSummary = m_plan.conversation->rollingSummary();
    request.scopeKey = m_plan.conversation->scopeKey();
    request.carrying = TurnHistory::carriedBy(m_plan.history, *m_plan.conversation, m_services.repository);
    if (request.carrying.testFlag(SensitiveData::screenText))
        m_plan.conversation->noteScreenText(); // also what only its messages told so far
    request.isContinuation = m_plan.isContinuation;
    request.memoryAllowed = m_plan.memoryAllowed;
    return m_services.router.openTurn(std::move(request), std::move(stop));
}

AsyncStream<AgentEvent> ChatTurn::begin(OpenedTurn opened)
{
    m_proofRow = opened.proofRow;
    m_services.proofs.follow(m_plan.reply->id(), m_proofRow);
    m_plan.reply->setStatus(MessageStatus::streaming);
    m_recorder.emplace(m_plan.reply, m_plan.isContinuation ? m_plan.reply->content() : QString(),
                       m_services.messages, m_services.companion, m_services.clock);
    return m_services.replies.run(std::move(opened), {m_plan.conversation->scopeKey(), m_plan.userWords});
}

void ChatTurn::take(const AgentEvent &event)
{
    const auto *finished = std::get_if<Agent::ToolFinished>(&event);
    if (finished && !finished->result.isError && ToolLabels::isScreenReading(finished->call))
        m_plan.conversation->noteScreenText();
    m_recorder->apply(event);
}

void ChatTurn::requireText() const
{
    if (m_recorder->text().isEmpty())
        throw ProviderError(ProviderError::Plain::emptyResponse);
}

void ChatTurn::end(bool wasStopped, std::exception_ptr failure)
{
    if (std::exchange(m_hasEnded, true))
        return;
    if (m_recorder)
        m_recorder->store(); // text that had arrived stays, however the turn ends
    m_recorder.reset();
    writeEnding(wasStopped, failure);
    save();
    if (m_proofRow && m_services.proofs.note(*m_plan.reply, *m_proofRow))
        save();
    m_services.messages.signalIndicator(m_plan.reply->id(), {indicatorEnding(m_plan.reply->status())});
    m_services.messages.messageChanged(m_plan.reply->id());
    Q_EMIT ended();
}

void ChatTurn::writeEnding(bool wasStopped, const std::exception_ptr &failure)
{
    ChatMessage &reply = *m_plan.reply;
    reply.stopToolLines();
    if (wasStopped) {
        reply.setStatus(MessageStatus::cancelled);
        m_ending = Ending::cancelled;
    } else if (!failure) {
        reply.setStatus(MessageStatus::delivered);
        m_ending = Ending::completed;
        for (const auto &broken : m_plan.standsInFor)
            m_services.repository.context().remove(*broken);
    } else {
        const Failure kind = kindOf(failure);
        reply.setStatus(kind == Failure::other ? MessageStatus::failed : MessageStatus::cancelled);
        reply.setErrorMessage(presentationOf(failure).message);
        m_ending = kind == Failure::providerCancelled ? Ending::cancelled : Ending::failed;
        m_error = failure;
    }
}

void ChatTurn::save()
{
    try {
        m_services.repository.save();
    } catch (...) {
        m_saveError = std::current_exception();
    }
}

} // namespace morvane
