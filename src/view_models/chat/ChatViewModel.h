#pragma once

#include "view_models/chat/ApprovalDesk.h"
#include "view_models/chat/BannerDesk.h"
#include "view_models/chat/ChatStores.h"
#include "view_models/chat/ComposerEntries.h"
#include "view_models/chat/DraftKeeper.h"
#include "view_models/chat/GhostDesk.h"
#include "view_models/chat/MessageDesk.h"
#include "view_models/chat/MessageListModel.h"
#include "view_models/chat/OpenConversation.h"
#include "view_models/chat/ProofPanelViewModel.h"
#include "view_models/chat/QuickAction.h"
#include "view_models/chat/ReplyDelivery.h"
#include "view_models/chat/ReplyReader.h"
#include "view_models/chat/SealedAttachment.h"

#include <QObject>
#include <QPointer>
#include <QUuid>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace morvane {

class AIRequestRouter;
class ChatTurn;
class Clock;
class CompanionViewModel;
class Conversation;
class ConversationRepository;
class LocalModelServing;
class ProofLedger;
class ProofWatch;
class ReplyNotifying;
class ReplyRunning;
class SettingsStore;
class SpeechOutputting;
class TurnPlanner;
struct TurnPlan;

// Controller of the chat screen: the composer's draft, and what the window binds to of the open chat, the
// turn at work in it, its error and its approval. GUI thread.
class ChatViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(morvane::MessageListModel *messages READ messages CONSTANT)
    Q_PROPERTY(morvane::ProofPanelViewModel *proofPanel READ proofPanel CONSTANT)
    Q_PROPERTY(morvane::GhostDesk *ghosts READ ghosts CONSTANT)
    Q_PROPERTY(morvane::ComposerEntries *entries READ entries CONSTANT)
    Q_PROPERTY(morvane::ReplyReader *reader READ reader CONSTANT)
    Q_PROPERTY(QString draft READ draft WRITE setDraft NOTIFY draftChanged)
    Q_PROPERTY(bool canSend READ canSend NOTIFY canSendChanged)
    Q_PROPERTY(bool isEditing READ isEditing NOTIFY isEditingChanged)
    Q_PROPERTY(int deletedCount READ deletedCount NOTIFY deletedChanged)
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
        LocalModelServing *localModel = nullptr; // absent: there is no runtime to start again
        DocumentImporting *documents = nullptr;  // absent: no file can be attached
        ScreenGlancing *screen = nullptr;        // absent: nothing is offered of it
        SpeechCapturing *capture = nullptr;      // absent: nothing is taken down
        // What is on the clipboard; absent: nothing.
        std::function<const QMimeData *()> clipboard = {};
        // Whether a web search goes out with the person's own key; absent: it does not.
        std::function<bool()> searchesWithOwnKey = {};
        // The notes that a call to forget would delete; absent: only its words are shown.
        std::function<QStringList(const QString &about)> notesMatching = {};
        std::function<bool()> isLocked = {}; // nothing can be saved now; absent: never
    };

    explicit ChatViewModel(Services services, QObject *parent = nullptr);
    ~ChatViewModel() override;

    [[nodiscard]] MessageListModel *messages() { return &m_messages; }
    [[nodiscard]] ProofPanelViewModel *proofPanel() { return &m_proofPanel; }
    [[nodiscard]] GhostDesk *ghosts() { return &m_ghosts; }
    [[nodiscard]] const ChatStores &stores() const { return m_stores; }
    [[nodiscard]] ComposerEntries *entries() { return &m_entries; }
    [[nodiscard]] ReplyReader *reader() { return &m_reader; }
    [[nodiscard]] const QString &draft() const { return m_draft; }
    void setDraft(const QString &draft);
    // A key went to the message field.
    Q_INVOKABLE void noteTyping();
    // The message field holds words, or had a key in the last second: nothing may take the keyboard from it.
    Q_INVOKABLE bool isWriting() const;
    [[nodiscard]] bool canSend() const;
    [[nodiscard]] bool isResponding() const { return m_isResponding; }
    // The draft is to take the place of the person's last message.
    [[nodiscard]] bool isEditing() const { return !m_edited.isNull(); }
    // How many messages undoDelete() would bring back.
    [[nodiscard]] int deletedCount() const { return m_desk.deletedCount(); }
    [[nodiscard]] bool hasBanner() const { return m_banner.banner().has_value(); }
    [[nodiscard]] ErrorBanner banner() const { return m_banner.banner().value_or(ErrorBanner{}); }
    [[nodiscard]] bool hasApproval() const { return m_approvals.pending().has_value(); }
    [[nodiscard]] ApprovalRequest approval() const
    {
        return m_approvals.pending().value_or(ApprovalRequest{});
    }
    [[nodiscard]] QDateTime approvalDeadline() const { return m_approvals.deadline(); }
    [[nodiscard]] QString title() const { return m_open.title(); }
    [[nodiscard]] QString conversationId() const { return m_open.id(); } // empty for none
    [[nodiscard]] QString sourceLabel() const;
    [[nodiscard]] bool isConfigured() const;

    [[nodiscard]] const std::shared_ptr<Conversation> &conversation() const { return m_open.current(); }
    // Turns that have started and not ended, those that were stopped included.
    [[nodiscard]] int turnsInFlight() const { return static_cast<int>(m_turns.size()); }
    // The proof row of each answer whose proof differs from the answer before it.
    [[nodiscard]] const std::map<QUuid, QUuid> &attestationRows() const;

    // Whose steps the panel and the line under a running reply show.
    void watchProofs(const ProofWatch &watch) { m_proofs.watch(watch); }

    // Set by the shell; a turn that ends while it is false notifies.
    void setWindowInFront(bool inFront) { m_delivery.setWindowInFront(inFront); }

    // Opens the chat that was open in a former run, or else the newest if it is still empty, or a new one. Of
    // another chat than the open one the person may first be asked about a Ghost chat that they leave with
    // it.
    void openAtStart() { m_open.openAtStart(); }
    void remember(const QString &id) { m_open.remember(id); } // before the first chat is opened
    Q_INVOKABLE void newConversation();
    Q_INVOKABLE void open(const QString &id);
    Q_INVOKABLE void remove(const QString &id) { m_open.remove(id); }
    Q_INVOKABLE void rename(const QString &id, const QString &title) { m_open.rename(id, title); }

    // Sends the draft and the pending attachment; nothing unless canSend().
    Q_INVOKABLE void send();
    // Sends what it asks with the pending attachment, or else with the draft.
    Q_INVOKABLE void perform(morvane::QuickActions::Action action);
    void sendMessage(const QString &text, const std::optional<ImportedAttachment> &attachment);
    // What the banner offers: the last turn, the save or the new chat that failed.
    Q_INVOKABLE void retry();
    Q_INVOKABLE void retryLastTurn();
    // The remedy of a banner; says so when it didn't help.
    Q_INVOKABLE void restartLocalModel();
    // A permission of the system stands in the way of an ability.
    void showPermissionProblem(const UserPresentableError &error);
    // Nothing that was asked for went wrong.
    void showNotice(const ErrorBanner &notice) { m_banner.tell(notice); }
    Q_INVOKABLE void continueReply(const QString &messageId);
    Q_INVOKABLE void stopResponding();
    // Nothing is heard or read aloud any more, at once; what is being said is dropped.
    void stopVoice();

    // What can be done to messages. Nothing of it while a turn runs, nor to a message that it doesn't fit.
    Q_INVOKABLE void regenerate();
    Q_INVOKABLE void showVersion(const QString &replyId, int distance);
    // Brings the person's last message into the composer; the draft comes back when it was sent or cancelled.
    Q_INVOKABLE void beginEdit(const QString &messageId);
    Q_INVOKABLE void cancelEdit();
    Q_INVOKABLE void deleteMessage(const QString &messageId);
    Q_INVOKABLE void undoDelete();
    Q_INVOKABLE void forgetDeleted() { m_desk.forgetDeleted(); }

    // The same where no event loop will run again: when this returns, every turn has ended, what had arrived
    // is in its record, and the draft is stored.
    void endTurns();
    // Ends the turns, keeps what was being written sealed, and lets go of every opened text, until reveal().
    void conceal();
    // Once texts can be opened again; the first time it opens a chat if none was.
    void reveal();
    // Puts words below the draft, each line marked as a quote.
    Q_INVOKABLE void quote(const QString &words);
    // Puts words behind the draft.
    Q_INVOKABLE void addToDraft(const QString &words);
    // What is copied of the newest reply that has words; empty for none.
    Q_INVOKABLE QString lastAnswer() const;
    Q_INVOKABLE void dismissBanner() { m_banner.dismiss(); }
    Q_INVOKABLE void approve() { resolveApproval(ApprovalAnswer::allowedOnce); }
    Q_INVOKABLE void approveForChat() { resolveApproval(ApprovalAnswer::allowedForChat); }
    Q_INVOKABLE void decline() { resolveApproval(ApprovalAnswer::declined); }

    // The tool registry's approval hook: suspends until the user answers or the time is up.
    [[nodiscard]] QCoro::Task<ApprovalAnswer> requestApproval(QString verb, AIToolCall call,
                                                              bool offersChatWideYes);
    void resolveApproval(ApprovalAnswer answer) { m_approvals.resolve(answer); }

    void showError(const std::exception_ptr &error) { m_banner.show(error); }

Q_SIGNALS:
    void draftChanged();
    void canSendChanged();
    void isEditingChanged();
    void deletedChanged();
    void quoted(); // the view goes on writing below it
    void isRespondingChanged();
    void bannerChanged();
    void approvalChanged();
    void conversationChanged();
    void conversationsChanged(); // the list of chats: one came, went or was renamed
    void sourceChanged();
    void needsAttention(); // an approval waits for the user
    void approvalResolved();
    void messageSent();                      // the view scrolls to it
    void replyFinished(const QString &text); // as a voice would say it, for assistive technology

private:
    [[nodiscard]] bool hasConversation();
    void save();
    void showOpened(OpenConversation::Composer composer);
    void moveDraft();
    void bringDraft();
    void showDraft(const QString &draft);
    [[nodiscard]] QString takeDraft();
    void modelRestarted(bool good);
    void glanceAgain();
    void setEdited(const QUuid &message);
    void sendEdited();
    void tellTitle(const QString &former);
    [[nodiscard]] bool isAtWork(const Conversation &conversation) const;
    [[nodiscard]] std::shared_ptr<ChatMessage> idleMessage(const QString &id) const;
    void refreshMessages();
    void makeWay();
    void startSent(TurnPlan plan);
    void startTurn(TurnPlan plan);
    void turnEnded(ChatTurn &turn);
    void tellEnding(const ChatTurn &turn);
    void setResponding(bool responding);

    Services m_services;
    AnswerProofs m_proofs;
    MessageListModel m_messages;
    ProofPanelViewModel m_proofPanel;
    ApprovalDesk m_approvals;
    BannerDesk m_banner;
    ComposerEntries m_entries;
    ChatStores m_stores;
    OpenConversation m_open;
    GhostDesk m_ghosts;
    DraftKeeper m_drafts;
    MessageDesk m_desk;
    ReplyReader m_reader;
    ReplyDelivery m_delivery;
    std::unique_ptr<TurnPlanner> m_planner;
    QString m_draft;
    std::shared_ptr<Conversation> m_draftOwner; // null while there is no chat to write in
    QUuid m_edited;                             // the message whose new words the draft is; null for none
    std::optional<std::chrono::milliseconds> m_typedAt; // of the clock's elapsed time
    bool m_isResponding = false;
    bool m_isConcealed = false;
    std::optional<SealedAttachment> m_sealedAttachment; // while concealed
    QString m_sealedReading;                            // likewise, of what wasn't read to its end
    QString m_sealedDraft;                              // while concealed: what stands in no chat's record
    bool m_isRestartingModel = false;                   // at the person's wish, by the banner
    std::vector<std::unique_ptr<ChatTurn>> m_turns;     // a stopped turn may end after the next has begun
    QPointer<ChatTurn> m_latestTurn;
};

} // namespace morvane
