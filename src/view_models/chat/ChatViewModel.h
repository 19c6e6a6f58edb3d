#pragma once

#include "ai/agent/AgentEvent.h"
#include "ai/routing/AIRequestRouter.h"
#include "async/TaskHandle.h"
#include "documents/ImportedAttachment.h"
#include "models/MessageStatus.h"
#include "view_models/chat/ApprovalDesk.h"
#include "view_models/chat/ErrorBanner.h"
#include "view_models/chat/MessageListModel.h"

#include <QObject>
#include <QPointer>
#include <QUuid>

#include <functional>
#include <map>
#include <memory>
#include <optional>

namespace morvane {

class ChatMessage;
class Clock;
class CompanionViewModel;
class Conversation;
class ConversationRepository;
class ReplyNotifying;
class ReplyRunning;
class SettingsStore;
class SpeechOutputting;

// Controller of the chat screen: the open conversation, the composer's draft and the one turn in progress.
// GUI thread.
class ChatViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(morvane::MessageListModel *messages READ messages CONSTANT)
    Q_PROPERTY(QString draft READ draft WRITE setDraft NOTIFY draftChanged)
    Q_PROPERTY(bool canSend READ canSend NOTIFY canSendChanged)
    Q_PROPERTY(bool isResponding READ isResponding NOTIFY isRespondingChanged)
    Q_PROPERTY(bool hasBanner READ hasBanner NOTIFY bannerChanged)
    Q_PROPERTY(morvane::ErrorBanner banner READ banner NOTIFY bannerChanged)
    Q_PROPERTY(bool hasApproval READ hasApproval NOTIFY approvalChanged)
    Q_PROPERTY(morvane::ApprovalRequest approval READ approval NOTIFY approvalChanged)
    Q_PROPERTY(QDateTime approvalDeadline READ approvalDeadline NOTIFY approvalChanged)
    Q_PROPERTY(QString title READ title NOTIFY conversationChanged)
    Q_PROPERTY(QString conversationId READ conversationId NOTIFY conversationChanged)
    Q_PROPERTY(QString sourceLabel READ sourceLabel NOTIFY sourceChanged)
    Q_PROPERTY(bool isConfigured READ isConfigured NOTIFY sourceChanged)

public:
    // Everything a turn needs from outside; must outlive the controller.
    struct Services {
        ConversationRepository &repository;
        AIRequestRouter &router;
        ReplyRunning &replies;
        SettingsStore &settings;
        ProofLedger &proofs;
        CompanionViewModel &companion;
        Clock &clock;
        SpeechOutputting *speech = nullptr;      // absent: nothing is read aloud
        ReplyNotifying *notifications = nullptr; // absent: nothing is posted
        // Whether a web search goes out with the person's own key; absent: it does not.
        std::function<bool()> searchesWithOwnKey = {};
    };

    explicit ChatViewModel(Services services, QObject *parent = nullptr);
    ~ChatViewModel() override;

    [[nodiscard]] MessageListModel *messages() { return &m_messages; }
    [[nodiscard]] const QString &draft() const { return m_draft; }
    void setDraft(const QString &draft);
    [[nodiscard]] bool canSend() const;
    [[nodiscard]] bool isResponding() const { return m_isResponding; }
    [[nodiscard]] bool hasBanner() const { return m_banner.has_value(); }
    [[nodiscard]] ErrorBanner banner() const { return m_banner.value_or(ErrorBanner{}); }
    [[nodiscard]] bool hasApproval() const { return m_approvals.pending().has_value(); }
    [[nodiscard]] ApprovalRequest approval() const
    {
        return m_approvals.pending().value_or(ApprovalRequest{});
    }
    [[nodiscard]] QDateTime approvalDeadline() const { return m_approvals.deadline(); }
    [[nodiscard]] QString title() const;
    [[nodiscard]] QString conversationId() const; // empty for none
    [[nodiscard]] QString sourceLabel() const;
    [[nodiscard]] bool isConfigured() const;

    [[nodiscard]] const std::shared_ptr<Conversation> &conversation() const { return m_conversation; }
    [[nodiscard]] int turnsInFlight() const { return m_turnsInFlight; }
    // The proof row of each answer whose proof differs from the answer before it.
    [[nodiscard]] const std::map<QUuid, QUuid> &attestationRows() const { return m_attestationRows; }

    // Set by the shell; a turn that ends while it is false notifies.
    void setWindowInFront(bool inFront) { m_isWindowInFront = inFront; }

    // Opens the newest chat if it is still empty, else a new one.
    void openAtStart();
    Q_INVOKABLE void newConversation();
    Q_INVOKABLE void open(const QString &id);
    Q_INVOKABLE void remove(const QString &id);
    Q_INVOKABLE void rename(const QString &id, const QString &title);

    // Sends the draft and the pending attachment; nothing unless canSend().
    Q_INVOKABLE void send();
    void sendMessage(const QString &text, const std::optional<ImportedAttachment> &attachment);
    Q_INVOKABLE void retryLastTurn();
    Q_INVOKABLE void continueReply(const QString &messageId);
    Q_INVOKABLE void stopResponding();
    // The text of the newest reply that has any; empty for none.
    Q_INVOKABLE QString lastAnswer() const;
    Q_INVOKABLE void dismissBanner();
    Q_INVOKABLE void approve();
    Q_INVOKABLE void approveForChat();
    Q_INVOKABLE void decline();

    void setPendingAttachment(std::optional<ImportedAttachment> attachment);

    // The tool registry's approval hook: suspends until the user answers or the time is up.
    [[nodiscard]] QCoro::Task<ApprovalAnswer> requestApproval(QString verb, AIToolCall call,
                                                              bool offersChatWideYes);
    void resolveApproval(ApprovalAnswer answer) { m_approvals.resolve(answer); }

    void showError(const std::exception_ptr &error);

Q_SIGNALS:
    void draftChanged();
    void canSendChanged();
    void isRespondingChanged();
    void bannerChanged();
    void approvalChanged();
    void conversationChanged();
    void conversationsChanged(); // the list of chats: one came, went or was renamed
    void sourceChanged();
    void needsAttention(); // an approval waits for the user
    void approvalResolved();
    void messageSent();                      // the view scrolls to it
    void replyFinished(const QString &text); // for assistive technology

private:
    struct Turn;

    static QCoro::Task<> runTurn(QPointer<ChatViewModel> self, Turn turn, std::stop_token stop);
    static QCoro::Task<> streamReply(QPointer<ChatViewModel> self, Turn turn, std::stop_token stop);
    static QCoro::Task<AsyncStream<AgentEvent>> openReply(QPointer<ChatViewModel> self, Turn turn,
                                                          std::stop_token stop);

    static QCoro::Task<> speakReply(QPointer<ChatViewModel> self, QString text, std::optional<QString> voice,
                                    double rate, bool speakCodeBlocks, std::stop_token stop);

    void startTurn(Turn turn);
    void beginTurn(Turn &turn);
    void completeTurn(const Turn &turn);
    void cancelTurn(const Turn &turn);
    void failTurn(const Turn &turn, const std::exception_ptr &error);
    void endTurn(const Turn &turn);
    void deliver(const Turn &turn);
    void notifyDelivered(const Turn &turn);
    void recordPlace(const Turn &turn);

    std::shared_ptr<ChatMessage> addMessage(MessageRole role, const QString &text, MessageStatus status,
                                            const ImportedAttachment *attachment = nullptr);
    void addDocument(const ImportedAttachment &attachment);
    void setConversation(std::shared_ptr<Conversation> conversation);
    void refreshMessages();
    void save();
    void setResponding(bool responding);
    void setBanner(std::optional<ErrorBanner> banner);
    [[nodiscard]] bool isCurrent(const Turn &turn) const;

    Services m_services;
    MessageListModel m_messages;
    ApprovalDesk m_approvals;
    std::shared_ptr<Conversation> m_conversation;
    QString m_draft;
    bool m_isResponding = false;
    std::optional<ImportedAttachment> m_pendingAttachment;
    std::optional<ErrorBanner> m_banner;
    bool m_isWindowInFront = true;
    TaskHandle m_responseTask;
    TaskHandle m_speechTask;
    std::uint64_t m_latestTurn = 0; // a stopped turn ends after the next one may have begun
    int m_turnsInFlight = 0;
    std::map<QUuid, QUuid> m_attestationRows;
    std::optional<ProofLedger::Attestation> m_lastAttestation; // of the answer before
};

} // namespace morvane
