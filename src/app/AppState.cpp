#include "app/AppState.h"

#include "ai/agent/ReplyRunner.h"
#include "ai/prompts/SystemPrompt.h"
#include "ai/prompts/SystemPromptStore.h"
#include "ai/providers/OllamaNativeProvider.h"
#include "ai/providers/OpenAICompatibleProvider.h"
#include "ai/routing/AIRequestRouter.h"
#include "ai/tools/ToolRegistry.h"
#include "app/GhostQuestion.h"
#include "app/WhatChangedNotice.h"
#include "async/Clock.h"
#include "attestation/ProofLedger.h"
#include "deployment/DeploymentValues.h"
#include "memory/MemoryStore.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "persistence/ConversationRepository.h"
#include "persistence/DepartedData.h"
#include "persistence/LegacyBundleMigration.h"
#include "persistence/PersistenceController.h"
#include "persistence/SettingsStore.h"
#include "persistence/UserDefaultsSettingsRepository.h"
#include "security/KeychainError.h"
#include "security/KeychainServicing.h"
#include "security/LocalDataVault.h"
#include "security/ProcessKeySealing.h"
#include "security/ServiceIdentity.h"
#include "services/WebAccessService.h"
#include "utils/log/Log.h"
#include "utils/text/Product.h"
#include "view_models/ShellViewModel.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/chat/NoteReceiptsModel.h"
#include "view_models/companion/CompanionViewModel.h"
#include "view_models/settings/AISettingsViewModel.h"
#include "view_models/settings/AbilitiesViewModel.h"
#include "view_models/settings/InstructionsViewModel.h"
#include "view_models/settings/MemoryViewModel.h"
#include "view_models/settings/NetworkLedgerViewModel.h"
#include "view_models/settings/SearchKeyViewModel.h"
#include "view_models/sidebar/ConversationListModel.h"
#include "view_models/sidebar/HistorySearchModel.h"
#include "view_models/sidebar/SourceMenuViewModel.h"

#include <QFileInfo>
#include <QPointer>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString decidedWhatChangedKey = u"didDecideWhatChangedNotice.v1"_s;
const QString showWhatChangedKey = u"showWhatChangedNotice.v1"_s;

bool hasChats(const SupportFolders &folders)
{
    return QFileInfo::exists(ChatStoreLocation::storePath(folders)) ||
           QFileInfo::exists(ChatStoreLocation::oldStorePath(folders));
}

// Has no provider that seals yet, so the private cloud is shown as unavailable and nothing is sent there.
PrivateCloud deployedPrivateCloud()
{
    const QString address(DeploymentValues::privateCloudURL);
    PrivateCloud cloud;
    cloud.devRelay = DevRelay::origin(address);
    if (!cloud.devRelay)
        cloud.endpoint = address;
    return cloud;
}

// The practice server answers searches as well.
WebAccessService::Endpoints searchEndpoints(const CommandLine &commandLine)
{
    auto endpoints = WebAccessService::Endpoints::ofThisBuild();
    if (commandLine.practiceServer)
        endpoints.builtIn = QUrl(*commandLine.practiceServer).adjusted(QUrl::RemovePath);
    return endpoints;
}

} // namespace

AppState::AppState(const CommandLine &commandLine, Host host, Clock &clock, const Secrets &secrets,
                   QObject *parent)
    : QObject(parent)
    , m_commandLine(commandLine)
    , m_host(host)
    , m_clock(clock)
    , m_secrets(secrets)
    , m_usedBefore(hasChats(commandLine.folders()))
    , m_vault(std::make_shared<LocalDataVault>(secrets.keychain))
    , m_settingsRepository(std::make_unique<UserDefaultsSettingsRepository>(
          UserDefaultsSettingsRepository::path(commandLine.folders(), Product::serviceName)))
{
    if (host == Host::application)
        moveFormerData();
    m_settings = std::make_unique<SettingsStore>(*m_settingsRepository);
    if (host == Host::application)
        expectKey();
    if (commandLine.resetOnboarding)
        m_settings->setOnboardingComplete(false);
    openStore();
    makeServices();
    makeViewModels();
    makeAbilities();
    makeAbilityViewModels();
    if (host == Host::application)
        decideWhatChangedNotice();
    applyRetention();
}

AppState::~AppState() = default;

// What older builds kept under other names and in the clear. Each part runs once, before anything reads what
// it moves.
void AppState::moveFormerData()
{
    const SupportFolders folders = m_commandLine.folders();
    const auto openDomain = [folders](const QString &identifier) -> std::unique_ptr<SettingsRepository> {
        return UserDefaultsSettingsRepository::existing(
            UserDefaultsSettingsRepository::path(folders, identifier));
    };
    LegacyBundleMigration::runOnce({.folders = folders,
                                    .defaults = *m_settingsRepository,
                                    .openDomain = openDomain,
                                    .legacySecrets = m_secrets.legacy,
                                    .keychain = m_secrets.keychain});
    const QStringList sealed = m_vault->sealLeftovers(folders.data);
    if (!sealed.isEmpty())
        Log::info(Log::Category::App, "Sealed %ld store(s) an older build left in the clear"_L1,
                  {sealed.size()});
    DepartedData::removeCodingEngineOnce(folders, *m_settingsRepository);
    DepartedData::removeModulesOnce(folders, *m_settingsRepository);
}

// Where data has been sealed before, a missing key is an error and never a fresh start.
void AppState::expectKey()
{
    bool holdsKey = false;
    try {
        holdsKey = m_secrets.keychain.read(LocalDataVault::keyAccount).has_value();
    } catch (const KeychainError &) {
        holdsKey = true; // refused is not missing
    }
    if (holdsKey || m_settings->onboardingComplete())
        m_vault->requireExistingKey();
}

// A store that won't open doesn't stop the start: one in memory takes its place, and the window says why.
void AppState::openStore()
{
    const PersistenceController::Place place{
        .folders = m_commandLine.folders(),
        .defaults = *m_settingsRepository,
        .isVaultLocked = [vault = m_vault] { return vault->isLocked(); }};
    try {
        m_persistence = PersistenceController::onDisk(place, m_vault);
    } catch (const PersistenceError &error) {
        m_startupError = error;
        m_persistence = PersistenceController::inMemory(std::make_shared<ProcessKeySealing>());
    }
    m_repository = std::make_unique<ConversationRepository>(m_persistence->mainContext(), m_clock,
                                                            m_settingsRepository.get());
    try {
        m_repository->sealPlainTexts();
    } catch (const PersistenceError &) {
        // Tried again at the next start.
    }
}

void AppState::makeServices()
{
    m_networkLedger = std::make_unique<NetworkLedger>();
    m_network = std::make_unique<AppNetwork>(*m_networkLedger, m_clock);
    m_proofs = std::make_unique<ProofLedger>();
    const auto ollama = std::make_shared<OllamaNativeProvider>(*m_network, m_clock);
    m_router = std::make_unique<AIRequestRouter>(
        AIRequestRouter::Services{.settings = *m_settings,
                                  .keychain = m_secrets.keychain,
                                  .proofs = *m_proofs,
                                  .clock = m_clock,
                                  .provider = std::make_shared<OpenAICompatibleProvider>(*m_network),
                                  .nativeOllama = ollama,
                                  .ollama = ollama.get(),
                                  .privateCloud = deployedPrivateCloud()});
    m_replies = std::make_unique<ReplyRunner>(*m_router);
}

void AppState::makeViewModels()
{
    m_companion = std::make_unique<CompanionViewModel>(m_clock);
    m_chat = std::make_unique<ChatViewModel>(
        ChatViewModel::Services{.repository = *m_repository,
                                .router = *m_router,
                                .replies = *m_replies,
                                .settings = *m_settings,
                                .proofs = *m_proofs,
                                .companion = *m_companion,
                                .clock = m_clock,
                                .searchesWithOwnKey = [this] { return m_web && m_web->usesOwnKey(); }});
    m_chat->openAtStart();
    m_conversations = std::make_unique<ConversationListModel>(*m_repository, m_clock);
    connect(m_chat.get(), &ChatViewModel::conversationsChanged, m_conversations.get(),
            &ConversationListModel::refresh);
    m_search = std::make_unique<HistorySearchModel>(*m_repository, m_clock);
    connect(m_chat.get(), &ChatViewModel::conversationsChanged, m_search.get(), &HistorySearchModel::refresh);
    m_aiSettings =
        std::make_unique<AISettingsViewModel>(*m_settings, m_secrets.keychain, *m_router, *m_network);
    m_sources = std::make_unique<SourceMenuViewModel>(*m_router);
    m_networkLedgerView = std::make_unique<NetworkLedgerViewModel>(*m_networkLedger, m_clock);
    m_shell = std::make_unique<ShellViewModel>(
        *m_settings, m_startupError ? m_startupError->userMessage() : QString(),
        m_startupError ? m_startupError->recoverySuggestion().value_or(QString()) : QString());
}

void AppState::makeAbilities()
{
    m_memory = std::make_unique<MemoryStore>(*m_settings, *m_vault, m_clock,
                                             MemoryStore::defaultDirectory(m_commandLine.folders()));
    m_systemPrompts = std::make_unique<SystemPromptStore>(*m_settings, *m_vault,
                                                          SystemPromptStore::path(m_commandLine.folders()));
    m_identity = std::make_unique<ServiceIdentity>(m_secrets.keychain);
    m_web =
        std::make_unique<WebAccessService>(WebAccessService::Services{.network = *m_network,
                                                                      .keychain = m_secrets.keychain,
                                                                      .identity = *m_identity,
                                                                      .quotaDefaults = *m_settingsRepository,
                                                                      .clock = m_clock},
                                           searchEndpoints(m_commandLine));
    // Nothing reads the screen or acts on the desktop here yet; those abilities say so and are not offered.
    m_tools = std::make_unique<ToolRegistry>(ToolRegistry::Services{
        .settings = *m_settings, .memory = *m_memory, .web = *m_web, .clock = m_clock});
    letThePersonApprove();
    tellTheRouter();
    m_replies->setTools(m_tools.get());
}

// The registry goes before the chat does.
void AppState::letThePersonApprove()
{
    const auto ask = [this](bool offersChatWideYes) {
        return [this, offersChatWideYes](const QString &verb, const AIToolCall &call, const AITool &) {
            return m_chat->requestApproval(verb, call, offersChatWideYes);
        };
    };
    ToolRegistry::Hooks hooks;
    hooks.approvalHandler = ask(false);
    hooks.chatWideApprovalHandler = ask(true);
    m_tools->setHooks(std::move(hooks));
}

// The router outlives what it is told of here.
void AppState::tellTheRouter()
{
    m_router->setPromptParts(
        {.instructions =
             [prompts = QPointer(m_systemPrompts.get())] {
                 return prompts ? prompts->effectivePrompt() : SystemPrompt::defaultPrompt();
             },
         .notes = [memory =
                       QPointer(m_memory.get())] { return memory ? memory->promptBlock() : std::nullopt; }});
    m_router->setTools([tools = QPointer(m_tools.get())] {
        return tools ? tools->availableTools() : std::vector<AITool>();
    });
}

void AppState::makeAbilityViewModels()
{
    m_instructions = std::make_unique<InstructionsViewModel>(*m_systemPrompts);
    m_abilities = std::make_unique<AbilitiesViewModel>(*m_settings, *m_tools);
    m_notes = std::make_unique<MemoryViewModel>(*m_memory);
    m_receipts = std::make_unique<NoteReceiptsModel>(*m_memory);
    m_searchKey =
        std::make_unique<SearchKeyViewModel>(m_secrets.keychain, WebAccessService::searchKeyAccount(),
                                             [web = m_web.get()](QString key, std::stop_token stop) {
                                                 return web->testKey(std::move(key), std::move(stop));
                                             });
}

// Who used an older build learns once what went; a first start has nothing to be told.
// On disk at once: a program that is killed before its first chat is over must not take its person for one
// who has been here before.
void AppState::decideWhatChangedNotice()
{
    if (m_settingsRepository->boolean(decidedWhatChangedKey))
        return;
    m_settingsRepository->setBoolean(showWhatChangedKey, m_usedBefore);
    m_settingsRepository->setBoolean(decidedWhatChangedKey, true);
    m_settingsRepository->flush();
}

void AppState::showWhatChangedNotice()
{
    if (!m_settingsRepository->boolean(showWhatChangedKey).value_or(false))
        return;
    m_shell->ask(WhatChangedNotice::title(), WhatChangedNotice::lines().join(u"\n\n"_s), {u"Continue"_s},
                 [this](int) { m_settingsRepository->setBoolean(showWhatChangedKey, false); });
}

void AppState::applyRetention()
{
    try {
        m_repository->prune(retentionInterval(m_settings->conversationRetention()), m_clock.now());
    } catch (const PersistenceError &) {
        // The chats stay until the next start.
    }
}

void AppState::start()
{
    Q_EMIT mainWindowRequested();
    showWhatChangedNotice();
    Log::info(Log::Category::App, "Application started (%s)"_L1, {SettingsStore::versionText()});
    didBecomeActive();
}

void AppState::reopen()
{
    Q_EMIT mainWindowRequested();
}

// The application lock will judge the idle time here.
void AppState::didBecomeActive() {}

AppState::Termination AppState::shouldTerminate()
{
    if (!m_ghost || !m_ghost->holdsMessages())
        return Termination::now;
    const auto question = GhostQuestion::ask(false);
    m_shell->ask(question.title, question.text, question.buttons(), [this, question](int button) {
        const auto answer = question.answers.value(button, GhostQuestion::Answer::cancel);
        if (answer == GhostQuestion::Answer::cancel)
            return;
        if (answer == GhostQuestion::Answer::keep)
            m_ghost->keep();
        else
            m_ghost->drop();
        Q_EMIT quitConfirmed();
    });
    Q_EMIT mainWindowRequested();
    return Termination::cancel;
}

void AppState::willTerminate()
{
    m_chat->stopResponding();
    try {
        m_repository->save();
    } catch (const PersistenceError &) {
        // Logged where it failed; there is no window left to show it.
    }
}

} // namespace morvane
