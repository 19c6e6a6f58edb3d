#pragma once

#include "ai/agent/AgentEvent.h"
#include "view_models/chat/ThoughtTimer.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <memory>
#include <optional>

namespace morvane {

class Alarm;
class ChatMessage;
class Clock;
class CompanionViewModel;
class MessageListModel;

// Writes the events of one reply into its message. Text reaches the sealed record at most once in
// `storeInterval`, so that a fast stream costs neither sealing nor layout for each piece; a piece held back
// is stored when the interval is over. text() always has every piece.
class TurnRecorder {
public:
    static constexpr std::chrono::milliseconds storeInterval{80};

    // `text` is what the message holds already: the former reply when one is continued, else empty.
    TurnRecorder(std::shared_ptr<ChatMessage> message, QString text, MessageListModel &messages,
                 CompanionViewModel &companion, Clock &clock);
    ~TurnRecorder();
    TurnRecorder(const TurnRecorder &) = delete;
    TurnRecorder &operator=(const TurnRecorder &) = delete;

    [[nodiscard]] QString text() const;

    void apply(const AgentEvent &event) { std::visit(*this, event); }

    // Brings the record up to date with text().
    void store();

    void operator()(const Agent::Text &event);
    void operator()(const Agent::RetractText &event);
    void operator()(const Agent::ToolStarted &event);
    void operator()(const Agent::ToolFinished &event);
    void operator()(const Agent::Thinking &event);
    void operator()(const Agent::TruncatedByTokenLimit &event);
    void operator()(const Agent::ToolsRejected &event);

private:
    void hear(const QString &piece);
    void addSources(const Agent::ToolFinished &event);
    [[nodiscard]] QStringList shownDomains() const;
    void changed();

    std::shared_ptr<ChatMessage> m_message;
    QString m_before; // what the message held
    QString m_reply;  // what came since
    QString m_stored;
    ThoughtTimer m_thought;
    std::chrono::milliseconds m_thoughtBefore;
    QStringList m_domains; // seen this turn
    QStringList m_read;    // those of pages, not of what a page or a search names
    std::chrono::milliseconds m_storedAt;
    std::unique_ptr<Alarm> m_heldBack;
    MessageListModel &m_messages;
    CompanionViewModel &m_companion;
    Clock &m_clock;
};

} // namespace morvane
