#pragma once

#include "view_models/chat/AnswerProofs.h"
#include "view_models/chat/OpenedMessages.h"
#include "view_models/chat/ReplyIndicator.h"

#include <QAbstractListModel>
#include <QDateTime>
#include <QUuid>
#include <QtQml/qqmlregistration.h>

#include <chrono>
#include <map>
#include <memory>
#include <set>
#include <vector>

namespace morvane {

class ChatMessage;
class Clock;
class Alarm;

// What the window shows of a line about an ability when it is opened.
struct ToolLineDetail {
    Q_GADGET
    QML_VALUE_TYPE(toolLineDetail)
    Q_PROPERTY(QString sent MEMBER sent)
    Q_PROPERTY(QString received MEMBER received)
    Q_PROPERTY(bool isFromOutside MEMBER isFromOutside)

public:
    QString sent;
    QString received;
    bool isFromOutside = false;
};

// The open chat's messages as the window shows them. Each message's sealed text is opened once and kept until
// its record changes, so that a scroll or a streamed piece opens nothing else.
class MessageListModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the chat")
    Q_PROPERTY(int count READ rowCountNow NOTIFY countChanged)
    Q_PROPERTY(int lastQuestion READ lastQuestion NOTIFY lastQuestionChanged)

public:
    using Messages = std::vector<std::shared_ptr<ChatMessage>>;

    enum Role {
        MessageIdRole = Qt::UserRole + 1, // text
        IsUserRole,                       // bool
        TextRole,                         // plain text; of a reply what it answers
        ThinkingRole,                     // what the model thought before that, in plain text; empty for none
        ThinkingLabelRole,                // "Thought for 12 seconds"
        FailedRole,                       // bool: the turn ended in an error
        CancelledRole,                    // bool: the user stopped it
        InterruptedRole,                  // bool: stored as unfinished, but no turn is at work on it
        RunningRole,                      // bool: a turn is at work on it now
        IndicatorTextRole,                // words beside the "working" animation; empty for none
        StalledRole,                      // bool: nothing came for a while in the middle of the reply
        ErrorTextRole,                    // text; empty for none
        ToolLinesRole,                    // list of texts
        ToolStatesRole,                   // list of raw texts of ToolLineState, one a line, or empty
        SourceDomainsRole,                // list of texts
        AttachmentNameRole,               // text; empty for none
        CanContinueRole,                  // bool: the reply hit its limit and may go on
        PlaceRole,                        // where the answer ran, and what proves it; empty when unknown
        ProofMarkRole,                    // "place", "running", "verified", "refused"; empty for no such line
        VersionRole,                      // which of a reply's versions this is, from 1
        VersionCountRole,                 // how many there are
    };

    // Both outlive this object.
    MessageListModel(Clock &clock, const AnswerProofs &proofs, QObject *parent = nullptr);
    ~MessageListModel() override;

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    // Takes the chat's messages in order. Rows that stay keep their place, and those that stand in for others
    // take theirs; a chat switch resets the list.
    void setMessages(Messages messages);
    [[nodiscard]] const Messages &messages() const { return m_messages; }

    // The row of the person's last message; -1 for none.
    [[nodiscard]] int lastQuestion() const { return m_lastQuestion; }

    // The message's readable text without a model's thinking, opened at most once for each change.
    [[nodiscard]] QString textOf(const ChatMessage &message) const;

    // What is copied of a message: the person's as it was written, a reply's words without marks, each block
    // as a screen reader says it. Of the whole chat the same, a blank line between the messages.
    [[nodiscard]] QString plainTextOf(const ChatMessage &message) const;
    Q_INVOKABLE QString plainText(const QString &messageId) const;
    Q_INVOKABLE QString wholeText() const;
    // As the model wrote it, all of it or the lines of some blocks; of the whole chat with the person's
    // words.
    Q_INVOKABLE QString markdown(const QString &messageId) const;
    [[nodiscard]] QString markdown(const QString &messageId, qsizetype firstBlock, qsizetype lastBlock) const;
    [[nodiscard]] QString wholeMarkdown() const;

    // Stored as unfinished, and no turn is at work on it.
    [[nodiscard]] bool isInterrupted(const ChatMessage &message) const;

    // Of the line at that place; empty where nothing is known. Opened anew each time.
    Q_INVOKABLE morvane::ToolLineDetail toolDetail(const QString &messageId, int line) const;

    // The message's record changed: only its row is told.
    void messageChanged(const QUuid &id);

    // What the line under an answer says; nothing for a message that isn't in the chat.
    [[nodiscard]] std::optional<AnswerProofs::Line> proofLine(const QUuid &id) const;
    // Any row of the proof ledger may have gone.
    void proofsChanged();

    // Whether Continue may be offered at all now.
    void setResponding(bool responding);

    // The indicators of replies that are or were in flight. A row without a running one is never shown as
    // running, whatever its stored status says.
    void beginIndicator(const QUuid &id);
    void signalIndicator(const QUuid &id, const ReplyIndicator::Signal &signal);
    [[nodiscard]] const ReplyIndicator *indicator(const QUuid &id) const;

    // How long was thought for a reply, as far as this run knows; zero when it doesn't.
    [[nodiscard]] std::chrono::milliseconds thoughtFor(const QUuid &id) const;
    void setThoughtFor(const QUuid &id, std::chrono::milliseconds taken);

Q_SIGNALS:
    void countChanged();
    void stalled(const QString &words); // of a reply that stands still: once, for assistive technology
    void lastQuestionChanged();

private:
    [[nodiscard]] int rowCountNow() const { return rowCount(); }
    [[nodiscard]] int rowOf(const QUuid &id) const;
    [[nodiscard]] bool isRunning(const ChatMessage &message) const;
    void take(Messages messages);
    void keepOnly(const Messages &messages);
    void reset(Messages messages);
    void replaceRows(Messages messages);
    void findLastQuestion();
    void rowChanged(int row, const QList<int> &roles = {});
    void tick();
    void showWaiting(const QUuid &id, const ReplyIndicator &indicator);

    Clock &m_clock;
    const AnswerProofs &m_proofs;
    Messages m_messages;
    mutable OpenedMessages m_opened;
    std::map<QUuid, ReplyIndicator> m_indicators;
    std::set<QUuid> m_toldStalled;
    bool m_responding = false;
    std::map<QUuid, std::chrono::milliseconds> m_thought;
    int m_lastQuestion = -1;
    std::unique_ptr<Alarm> m_ticker; // runs only while an indicator shows seconds or may soon
};

} // namespace morvane
