#pragma once

#include "app/CommandLine.h"
#include "persistence/PersistenceError.h"

#include <QObject>

#include <memory>
#include <optional>

namespace morvane {

class AIRequestRouter;
class AISettingsViewModel;
class AbilitiesViewModel;
class AppNetwork;
class ChatViewModel;
class Clock;
class CompanionViewModel;
class ConversationListModel;
class ConversationRepository;
class GhostKeeping;
class HistorySearchModel;
class InstructionsViewModel;
class KeychainServicing;
class LegacySecretListing;
class LocalDataVault;
class MemoryStore;
class MemoryViewModel;
class NetworkLedger;
class NetworkLedgerViewModel;
class NoteReceiptsModel;
class PersistenceController;
class ProofLedger;
class ReplyRunner;
class SearchKeyViewModel;
class ServiceIdentity;
class SettingsRepository;
class SettingsStore;
class ShellViewModel;
class SourceMenuViewModel;
class SystemPromptStore;
class ToolRegistry;
class WebAccessService;

// The root object: makes every long-lived service in its order, wires them to each other and answers the
// application's lifecycle. One for the life of the process, on the main thread.
class AppState : public QObject {
    Q_OBJECT
public:
    // Under a test host nothing of the person's is moved and no window opens.
    enum class Host { application, test };

    // The keychain, open and ready; both faces are usually one object. Outlives this one.
    struct Secrets {
        KeychainServicing &keychain;
        LegacySecretListing &legacy;
    };

    AppState(const CommandLine &commandLine, Host host, Clock &clock, const Secrets &secrets,
             QObject *parent = nullptr);
    ~AppState() override;

    [[nodiscard]] SettingsStore &settings() { return *m_settings; }
    [[nodiscard]] ConversationRepository &repository() { return *m_repository; }
    [[nodiscard]] AIRequestRouter &router() { return *m_router; }
    [[nodiscard]] ChatViewModel &chat() { return *m_chat; }
    [[nodiscard]] CompanionViewModel &companion() { return *m_companion; }
    [[nodiscard]] ConversationListModel &conversations() { return *m_conversations; }
    [[nodiscard]] HistorySearchModel &search() { return *m_search; }
    [[nodiscard]] SourceMenuViewModel &sources() { return *m_sources; }
    [[nodiscard]] InstructionsViewModel &instructions() { return *m_instructions; }
    [[nodiscard]] AbilitiesViewModel &abilities() { return *m_abilities; }
    [[nodiscard]] SearchKeyViewModel &searchKey() { return *m_searchKey; }
    [[nodiscard]] MemoryViewModel &notes() { return *m_notes; }
    [[nodiscard]] NoteReceiptsModel &receipts() { return *m_receipts; }
    [[nodiscard]] AISettingsViewModel &aiSettings() { return *m_aiSettings; }
    [[nodiscard]] NetworkLedgerViewModel &networkLedger() { return *m_networkLedgerView; }
    [[nodiscard]] ShellViewModel &shell() { return *m_shell; }
    [[nodiscard]] MemoryStore &memory() { return *m_memory; }
    [[nodiscard]] WebAccessService &web() { return *m_web; }

    // Why the store on disk did not open; an in-memory store stands in for it then.
    [[nodiscard]] const std::optional<PersistenceError> &startupError() const { return m_startupError; }

    [[nodiscard]] Host host() const { return m_host; }

    // The Ghost chat, once there can be one. Must outlive this object or be taken back with null.
    void setGhost(GhostKeeping *ghost) { m_ghost = ghost; }

    // Opens the first window.
    void start();
    // Someone asks for the window again.
    void reopen();
    void didBecomeActive();

    enum class Termination { now, cancel };
    // Cancel means that the person is being asked; quitConfirmed() follows unless they stay.
    [[nodiscard]] Termination shouldTerminate();
    void willTerminate();

Q_SIGNALS:
    void mainWindowRequested();
    void quitConfirmed();

private:
    void moveFormerData();
    void expectKey();
    void openStore();
    void makeServices();
    void makeViewModels();
    void makeAbilities();
    void letThePersonApprove();
    void tellTheRouter();
    void makeAbilityViewModels();
    void decideWhatChangedNotice();
    void showWhatChangedNotice();
    void applyRetention();

    // In the order they are made; each stands on those above it.
    CommandLine m_commandLine;
    Host m_host;
    Clock &m_clock;
    Secrets m_secrets;
    bool m_usedBefore; // an older build or an earlier start left chats
    std::shared_ptr<LocalDataVault> m_vault;
    std::unique_ptr<SettingsRepository> m_settingsRepository;
    std::unique_ptr<SettingsStore> m_settings;
    std::unique_ptr<PersistenceController> m_persistence;
    std::optional<PersistenceError> m_startupError;
    std::unique_ptr<ConversationRepository> m_repository;
    std::unique_ptr<NetworkLedger> m_networkLedger;
    std::unique_ptr<AppNetwork> m_network;
    std::unique_ptr<ProofLedger> m_proofs;
    std::unique_ptr<AIRequestRouter> m_router;
    std::unique_ptr<ReplyRunner> m_replies;
    std::unique_ptr<CompanionViewModel> m_companion;
    std::unique_ptr<ChatViewModel> m_chat;
    std::unique_ptr<ConversationListModel> m_conversations;
    std::unique_ptr<HistorySearchModel> m_search;
    std::unique_ptr<SourceMenuViewModel> m_sources;
    std::unique_ptr<AISettingsViewModel> m_aiSettings;
    std::unique_ptr<NetworkLedgerViewModel> m_networkLedgerView;
    std::unique_ptr<ShellViewModel> m_shell;
    std::unique_ptr<MemoryStore> m_memory;
    std::unique_ptr<SystemPromptStore> m_systemPrompts;
    std::unique_ptr<ServiceIdentity> m_identity;
    std::unique_ptr<WebAccessService> m_web;
    std::unique_ptr<ToolRegistry> m_tools;
    std::unique_ptr<InstructionsViewModel> m_instructions;
    std::unique_ptr<AbilitiesViewModel> m_abilities;
    std::unique_ptr<MemoryViewModel> m_notes;
    std::unique_ptr<NoteReceiptsModel> m_receipts;
    std::unique_ptr<SearchKeyViewModel> m_searchKey;
    GhostKeeping *m_ghost = nullptr;
};

} // namespace morvane
