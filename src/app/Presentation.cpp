#include "app/Presentation.h"

#include "ai/agent/ReplyRunner.h"
#include "ai/local/LocalModelService.h"
#include "ai/speech/WhisperSetup.h"
#include "ai/tools/ToolRegistry.h"
#include "app/AppLock.h"
#include "app/Assistant.h"
#include "app/DesktopHands.h"
#include "app/PrivateCloudParts.h"
#include "app/Storage.h"
#include "app/Voice.h"
#include "app/WindowMemory.h"
#include "audio/SpeechRecognitionService.h"
#include "audio/TextToSpeechService.h"
#include "audio/engines/PocketSphinxRecognizer.h"
#include "deployment/DeploymentValues.h"
#include "documents/DocumentImportService.h"
#include "memory/MemoryStore.h"
#include "models/Conversation.h"
#include "network/AppNetwork.h"
#include "security/LocalDataVault.h"
#include "security/ServiceIdentity.h"
#include "services/ScreenGlanceService.h"
#include "services/WebAccessService.h"
#include "view_models/ShellViewModel.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/chat/GhostClipboard.h"
#include "view_models/chat/ReceiptsModel.h"
#include "view_models/chat/SourceMenuViewModel.h"
#include "view_models/companion/CompanionViewModel.h"
#include "view_models/find/FindViewModel.h"
#include "view_models/settings/AISettingsViewModel.h"
#include "view_models/settings/AbilitiesViewModel.h"
#include "view_models/settings/AppLockViewModel.h"
#include "view_models/settings/CalendarsViewModel.h"
#include "view_models/settings/InstructionsViewModel.h"
#include "view_models/settings/LaunchAtLoginViewModel.h"
#include "view_models/settings/LocalModelViewModel.h"
#include "view_models/settings/MemoryViewModel.h"
#include "view_models/settings/MicrophoneViewModel.h"
#include "view_models/settings/NearbyViewModel.h"
#include "view_models/settings/NetworkLedgerViewModel.h"
#include "view_models/settings/PrivacyViewModel.h"
#include "view_models/settings/PrivateCloudViewModel.h"
#include "view_models/settings/ProofLedgerViewModel.h"
#include "view_models/settings/RecognitionViewModel.h"
#include "view_models/settings/ScreenTestViewModel.h"
#include "view_models/settings/SearchKeyViewModel.h"
#include "view_models/settings/ShortcutListModel.h"
#include "view_models/settings/SpeakingViewModel.h"
#include "view_models/sidebar/ConversationListModel.h"
#include "view_models/sidebar/HistorySearchModel.h"

#include <QClipboard>
#include <QGuiApplication>

namespace morvane {

namespace {

QStringList textsOf(const std::vector<MemoryStore::Fact> &facts)
{
    QStringList texts;
    for (const MemoryStore::Fact &fact : facts)
        texts.append(fact.text);
    return texts;
}

} // namespace

Presentation::Presentation(Storage &storage, Assistant &assistant, Voice &voice, AppLock &lock,
                           const AboutParts &aboutParts, GlobalKeys &keys, const Secrets &secrets, Clock &clock,
                           Work &work, ReplyNotifying *notifications)
    : settings(*storage.settings)
    , globalKeys(keys)
    , memory(std::make_unique<WindowMemory>(storage.folders, *storage.repository, clock))
    , companion(std::make_unique<CompanionViewModel>(clock))
    , chat(std::make_unique<ChatViewModel>(ChatViewModel::Services{
          .repository = *storage.repository,
          .router = *assistant.router,
          .replies = *assistant.replies,
          .settings = settings,
          .proofs = *assistant.proofs,
          .companion = *companion,
          .clock = clock,
          .speech = voice.ports.output ? voice.tts.get() : nullptr,
          .notifications = notifications,
          .localModel = assistant.localModel.get(),
          .documents = assistant.documents.get(),
          .screen = assistant.screenGlance.get(),
          .capture = voice.speech.get(),
          .clipboard = [] { return QGuiApplication::clipboard()->mimeData(); },
          .searchesWithOwnKey = [&web = *assistant.web] { return web.usesOwnKey(); },
          .notesMatching =
              [&memory = *assistant.memory](const QString &about) { return textsOf(memory.matching(about)); },
          .isLocked = [vault = storage.vault] { return vault->isLocked(); }}))
    , clipboard(std::make_unique<GhostClipboard>(*chat->ghosts(), *QGuiApplication::clipboard()))
    , conversations(std::make_unique<ConversationListModel>(*storage.repository, clock))
    , search(std::make_unique<HistorySearchModel>(*storage.repository, clock, work))
    , find(std::make_unique<FindViewModel>(*chat->messages(), *storage.repository, clock, work))
    , sources(std::make_unique<SourceMenuViewModel>(*assistant.router))
    , receipts(std::make_unique<ReceiptsModel>(*assistant.memory, assistant.hands->receipts.get()))
    , aiSettings(std::make_unique<AISettingsViewModel>(settings, secrets.keychain, *assistant.router,
                                                       *assistant.network, work))
    , localModel(std::make_unique<LocalModelViewModel>(*assistant.localModel, settings, clock, work))
    , nearby(
          std::make_unique<NearbyViewModel>(*assistant.services, *assistant.network, settings, clock, work))
    , instructions(std::make_unique<InstructionsViewModel>(*assistant.systemPrompts))
    , abilities(std::make_unique<AbilitiesViewModel>(settings, *assistant.tools))
    , searchKey(std::make_unique<SearchKeyViewModel>(
          secrets.keychain, WebAccessService::searchKeyAccount(),
          [&web = *assistant.web](QString key, std::stop_token stop) {
              return web.testKey(std::move(key), std::move(stop));
          },
          work))
    , calendars(std::make_unique<CalendarsViewModel>(settings, assistant.hands->ports.calendars))
    , shortcuts(std::make_unique<ShortcutListModel>(
          ShortcutListModel::Ports{assistant.hands->ports.shortcuts, assistant.hands->ports.links},
          assistant.hands->ports.shortcutsFolder))
    , notes(std::make_unique<MemoryViewModel>(*assistant.memory))
    , networkLedger(std::make_unique<NetworkLedgerViewModel>(*assistant.networkLedger, clock))
    , proofLedger(std::make_unique<ProofLedgerViewModel>(
          ProofLedgerViewModel::Services{.ledger = *assistant.proofs,
                                         .clock = clock,
                                         .guidePage = DeploymentValues::hardwareProofPage,
                                         .acceptedServers = assistant.privateCloud->acceptedListText()}))
    , privateCloud(std::make_unique<PrivateCloudViewModel>(*assistant.router))
    , privacy(std::make_unique<PrivacyViewModel>(
          storage.folders,
          [&identity = *assistant.identity] {
              identity.reset(ServiceIdentity::Service::Hosted);
              identity.reset(ServiceIdentity::Service::Search);
          },
          work))
    , speaking(std::make_unique<SpeakingViewModel>(settings, *voice.tts))
    , microphone(std::make_unique<MicrophoneViewModel>(settings, clock, voice.ports.microphones,
                                                       voice.ports.makeEngine, voice.ports.output))
    , recognition(std::make_unique<RecognitionViewModel>(settings, *voice.speechModel, *voice.packaged))
    , screenTest(std::make_unique<ScreenTestViewModel>(assistant.screenGlance.get()))
    , launchAtLogin(std::make_unique<LaunchAtLoginViewModel>(assistant.hands->launchAtLogin.get()))
    , shell(std::make_unique<ShellViewModel>(
          settings, storage.startupError ? storage.startupError->userMessage() : QString(),
          storage.startupAdvice()))
    , lock(std::make_unique<AppLockViewModel>(*lock.service, *lock.passphrase, settings))
    , about(aboutParts)
{
    shell->setLaunchAtLogin(launchAtLogin.get());
    QObject::connect(chat.get(), &ChatViewModel::conversationsChanged, conversations.get(),
                     &ConversationListModel::refresh);
    QObject::connect(chat.get(), &ChatViewModel::conversationsChanged, search.get(),
                     &HistorySearchModel::refresh);
    QObject::connect(searchKey.get(), &SearchKeyViewModel::changed, assistant.tools.get(),
                     &ToolRegistry::availabilityChanged);
    QObject::connect(proofLedger.get(), &ProofLedgerViewModel::cleared, chat->messages(),
                     &MessageListModel::proofsChanged);
    chat->watchProofs(*assistant.privateCloud->watch);
    const auto showReceipts = [this] {
        receipts->setChat(chat->conversation() ? chat->conversation()->scopeKey() : QString());
    };
    QObject::connect(chat.get(), &ChatViewModel::conversationChanged, receipts.get(), showReceipts);
    memory->follow(*chat);
    if (lock.service->isLocked())
        conceal();
    else
        chat->openAtStart();
}

void Presentation::conceal()
{
    chat->conceal();
    conversations->conceal();
    search->setQuery({});
    find->setQuery({});
    find->close();
}

Presentation::~Presentation() = default;

} // namespace morvane
