#pragma once

#include "ai/contract/AIMessage.h"
#include "ai/contract/AITool.h"
#include "async/AsyncStream.h"
#include "async/Clock.h"

#include <QCoroTask>
#include <QObject>
#include <QUuid>
#include <QtQml/qqmlregistration.h>

#include <chrono>
#include <memory>
#include <optional>

namespace morvane {

// A tool call that waits for the user's yes.
struct ApprovalRequest {
    Q_GADGET
    QML_VALUE_TYPE(approvalRequest)
    Q_PROPERTY(QString verb MEMBER verb)
    Q_PROPERTY(QString detail MEMBER detail)
    Q_PROPERTY(QString footnote MEMBER footnote)
    Q_PROPERTY(bool offersChatWideYes MEMBER offersChatWideYes)

public:
    QUuid id;
    AIToolCall call;
    QString verb;
    QString detail;
    QString footnote; // empty for none
    bool offersChatWideYes = false;
};

// Holds the one approval on screen and the tool call that is suspended on it. An approval left alone for
// `timeLimit` is declined. GUI thread.
class ApprovalDesk : public QObject {
    Q_OBJECT
public:
    static constexpr std::chrono::seconds timeLimit{120};

    explicit ApprovalDesk(Clock &clock, QObject *parent = nullptr);

    [[nodiscard]] const std::optional<ApprovalRequest> &pending() const { return m_pending; }
    // When the pending request is declined by itself.
    [[nodiscard]] const QDateTime &deadline() const { return m_deadline; }

    // Suspends until the user answers. A second request while one is pending is declined at once.
    [[nodiscard]] QCoro::Task<ApprovalAnswer> request(ApprovalRequest request);

    // Answers the pending request. A chat-wide yes where none was offered counts as a plain yes.
    void resolve(ApprovalAnswer answer);

Q_SIGNALS:
    void pendingChanged();
    void needsAttention(const ApprovalRequest &request);
    void resolved();

private:
    using Answers = AsyncStream<ApprovalAnswer>;

    Clock &m_clock;
    std::optional<ApprovalRequest> m_pending;
    std::optional<Answers::Producer> m_continuation;
    std::unique_ptr<Alarm> m_alarm;
    QDateTime m_deadline;
};

} // namespace morvane
