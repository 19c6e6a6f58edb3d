#include "app/AppState.h"

#include "ai/agent/ReplyRunner.h"
#include "ai/providers/OpenAICompatibleProvider.h"
#include "ai/routing/AIRequestRouter.h"
#include "app/GhostQuestion.h"
#include "attestation/ProofLedger.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "persistence/ConversationRepository.h"
#include "persistence/PersistenceController.h"
#include "persistence/SettingsStore.h"
#include "persistence/UserDefaultsSettingsRepository.h"
#include "security/InMemoryKeychainService.h"
#include "security/ProcessKeySealing.h"
#include "utils/Clock.h"
#include "utils/Log.h"
#include "utils/Product.h"
#include "view_models/AISettingsViewModel.h"
#include "view_models/ChatViewModel.h"
#include "view_models/CompanionViewModel.h"
#include "view_models/ConversationListModel.h"
#include "view_models/NetworkLedgerViewModel.h"
#include "view_models/ShellViewModel.h"

using namespace Qt::StringLiterals;

namespace {

const QString decidedWhatChangedKey = u"didDecideWhatChangedNotice.v1"_s;
const QString showWhatChangedKey = u"showWhatChangedNotice.v1"_s;

QString settingsPath(const SupportFolders &folders)
{
    return folders.config + u'/' + Product::serviceName + u".ini"_s;
}

} // namespace

AppState::AppState(const CommandLine &commandLine, Host host, Clock &clock, QObject *parent)
    : QObject(parent)
    , m_commandLine(commandLine)
    , m_clock(clock)
{
    m_settingsRepository =
        std::make_unique<UserDefaultsSettingsRepository>(settingsPath(commandLine.folders()));
    m_settings = std::make_unique<SettingsStore>(*m_settingsRepository);
    if (commandLine.resetOnboarding)
        m_settings->setOnboardingComplete(false);
    m_keychain = std::make_unique<InMemoryKeychainService>();
    openStore();
    makeServices();
    makeViewModels();
    decideWhatChangedNotice(host);
    applyRetention();
}

AppState::~AppState() = default;

// A store that won't open doesn't stop the start: one in memory takes its place, and the window says why.
void AppState::openStore()
{
    m_sealing = std::make_shared<ProcessKeySealing>();
    m_persistence = PersistenceController::inMemory(m_sealing);
    m_repository = std::make_unique<ConversationRepository>(m_persistence->mainContext(), m_clock,
                                                            m_settingsRepository.get());
}

void AppState::makeServices()
{
    m_networkLedger = std::make_unique<NetworkLedger>();
    m_network = std::make_unique<AppNetwork>(*m_networkLedger, m_clock);
    m_proofs = std::make_unique<ProofLedger>();
    m_router = std::make_unique<AIRequestRouter>(*m_settings, *m_keychain, *m_proofs, m_clock,
                                                 std::make_shared<OpenAICompatibleProvider>(*m_network));
    m_replies = std::make_unique<ReplyRunner>(*m_router);
}

void AppState::makeViewModels()
{
    m_companion = std::make_unique<CompanionViewModel>(m_clock);
    m_chat = std::make_unique<ChatViewModel>(ChatViewModel::Services{.repository = *m_repository,
                                                                     .router = *m_router,
                                                                     .replies = *m_replies,
                                                                     .settings = *m_settings,
                                                                     .proofs = *m_proofs,
                                                                     .companion = *m_companion,
                                                                     .clock = m_clock});
    m_chat->openAtStart();
    m_conversations = std::make_unique<ConversationListModel>(*m_repository, m_clock);
    connect(m_chat.get(), &ChatViewModel::conversationsChanged, m_conversations.get(),
            &ConversationListModel::refresh);
    m_aiSettings = std::make_unique<AISettingsViewModel>(*m_settings, *m_keychain, *m_router);
    m_networkLedgerView = std::make_unique<NetworkLedgerViewModel>(*m_networkLedger, m_clock);
    m_shell = std::make_unique<ShellViewModel>(
        *m_settings, m_startupError ? m_startupError->userMessage() : QString(),
        m_startupError ? m_startupError->recoverySuggestion().value_or(QString()) : QString());
}

// Who used an older build learns once what went; a first start has nothing to be told.
void AppState::decideWhatChangedNotice(Host host)
{
    if (host == Host::test || m_settingsRepository->boolean(decidedWhatChangedKey))
        return;
    m_settingsRepository->setBoolean(showWhatChangedKey, false);
    m_settingsRepository->setBoolean(decidedWhatChangedKey, true);
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
