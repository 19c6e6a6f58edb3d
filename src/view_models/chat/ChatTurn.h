#pragma once

#include "async/AsyncStream.h"
#include "async/TaskHandle.h"
#include "view_models/chat/TurnPlanner.h"
#include "view_models/chat/TurnRecorder.h"

#include <QObject>
#include <QPointer>
#include <QUuid>

#include <exception>

namespace morvane {

class AIRequestRouter;
class AnswerProofs;
class ReplyRunning;
struct OpenedTurn;

// One turn, from its plan to the stored reply: has it opened by the router, plays the reply's events into the
// record and ends once, whatever happens. A turn that is stopped keeps the text that had arrived; one that is
// destroyed before its end stops and tells nobody. GUI thread.
class ChatTurn : public QObject {
    Q_OBJECT
public:
    // All outlive the turn.
    struct Services {
        ConversationRepository &repository;
        AIRequestRouter &router;
        ReplyRunning &replies;
        AnswerProofs &proofs;
        MessageListModel &messages;
        CompanionViewModel &companion;
        Clock &clock;
    };

    enum class Ending {
        completed,
        cancelled, // by the person
        failed,    // error() says why
    };

    ChatTurn(Services services, TurnPlan plan);
    ~ChatTurn() override;

    // The turn may have ended when this returns.
    void start();

    // The turn ends as cancelled a moment later, when others may have begun.
    void stop() { m_task.requestStop(); }
    // The turn ends as cancelled before this returns. Not for callers that the turn itself may have called.
    void stopNow();

    [[nodiscard]] const ChatMessage &reply() const { return *m_plan.reply; }
    [[nodiscard]] const Conversation &conversation() const { return *m_plan.conversation; }

    // Set at the end.
    [[nodiscard]] Ending ending() const { return m_ending; }
    [[nodiscard]] const std::exception_ptr &error() const { return m_error; }
    // The reply is complete, but it could not be saved; null when it could.
    [[nodiscard]] const std::exception_ptr &saveError() const { return m_saveError; }

Q_SIGNALS:
    // The record is written and saved. The turn may be destroyed from the event loop, not from here.
    void ended();

private:
    static QCoro::Task<> run(QPointer<ChatTurn> self, std::stop_token stop);

    [[nodiscard]] QCoro::Task<OpenedTurn> open(std::stop_token stop);
    [[nodiscard]] AsyncStream<AgentEvent> begin(OpenedTurn opened);
    void take(const AgentEvent &event);
    void requireText() const;
    void end(bool wasStopped, std::exception_ptr failure);
    void writeEnding(bool wasStopped, const std::exception_ptr &failure);
    void save();

    Services m_services;
    TurnPlan m_plan;
    std::optional<TurnRecorder> m_recorder;  // while the reply arrives
    std::shared_ptr<const QUuid> m_proofRow; // once the turn is opened
    Ending m_ending = Ending::completed;
    std::exception_ptr m_error;
    std::exception_ptr m_saveError;
    bool m_hasEnded = false;
    TaskHandle m_task;
};

} // namespace morvane
