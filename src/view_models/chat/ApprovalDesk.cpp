#include "view_models/chat/ApprovalDesk.h"

#include <utility>

namespace morvane {

ApprovalDesk::ApprovalDesk(Clock &clock, QObject *parent)
    : QObject(parent)
    , m_clock(clock)
{}

QCoro::Task<ApprovalAnswer> ApprovalDesk::request(ApprovalRequest request)
{
    if (m_pending)
        co_return ApprovalAnswer::declined;
    auto [answers, continuation] = Answers::make();
    m_pending = request;
    m_continuation = std::move(continuation); // the only one: it goes with the desk and ends the wait
    m_deadline = m_clock.now().addMSecs(std::chrono::milliseconds(timeLimit).count());
    m_alarm = m_clock.after(timeLimit, [this, id = request.id] {
        if (m_pending && m_pending->id == id)
            resolve(ApprovalAnswer::declined);
    });
    Q_EMIT pendingChanged();
    Q_EMIT needsAttention(request);

    // From here on only the stream is touched: the desk may be gone when the answer comes.
    const std::optional<ApprovalAnswer> answer = co_await answers.next();
    co_return answer.value_or(ApprovalAnswer::declined);
}

void ApprovalDesk::resolve(ApprovalAnswer answer)
{
    auto continuation = std::exchange(m_continuation, std::nullopt);
    const auto request = std::exchange(m_pending, std::nullopt);
    m_alarm.reset();
    if (!continuation) {
        if (request)
            Q_EMIT pendingChanged();
        return;
    }
    if (answer == ApprovalAnswer::allowedForChat && !request->offersChatWideYes)
        answer = ApprovalAnswer::allowedOnce;
    Q_EMIT pendingChanged();
    Q_EMIT resolved();
    continuation->yield(answer);
    continuation->finish();
}

} // namespace morvane
