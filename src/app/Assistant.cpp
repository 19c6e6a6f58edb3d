#include "app/Assistant.h"

#include "ai/agent/ReplyRunner.h"
#include "ai/local/LocalModelService.h"
#include "ai/prompts/SystemPromptStore.h"
#include "ai/providers/OllamaNativeProvider.h"
#include "ai/providers/OpenAICompatibleProvider.h"
#include "ai/routing/AIRequestRouter.h"
#include "ai/routing/RouteConfiguration.h"
#include "ai/tools/ToolRegistry.h"
#include "app/DesktopHands.h"
#include "app/PrivateCloudParts.h"
#include "app/Storage.h"
#include "attestation/ProofLedger.h"
#include "documents/DocumentImportService.h"
#include "documents/ExtractionServices.h"
#include "memory/MemoryStore.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "persistence/SettingsRepository.h"
#include "persistence/SettingsStore.h"
#include "platform/linux/AvahiServiceBrowsing.h"
#include "platform/linux/LinuxMachine.h"
#include "security/LocalDataVault.h"
#include "security/ServiceIdentity.h"
#include "services/DesktopActionService.h"
#include "services/ScreenGlanceService.h"
#include "services/ScreenLanguages.h"
#include "services/ScreenTextRecognizer.h"
#include "services/WebAccessService.h"

#include <QCoreApplication>
#include <QLocale>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The practice server answers searches as well.
WebAccessService::Endpoints searchEndpoints(const CommandLine &commandLine)
{
    auto endpoints = WebAccessService::Endpoints::ofThisBuild();
    if (commandLine.practiceServer)
        endpoints.builtIn = QUrl(*commandLine.practiceServer).adjusted(QUrl::RemovePath);
    return endpoints;
}

std::unique_ptr<LocalModelService> makeLocalModel(const CommandLine &commandLine, const Assistant &assistant,
                                                  Storage &storage, Clock &clock, Work &work)
{
    auto service = std::make_unique<LocalModelService>(
        LocalModelService::Services{.settings = *storage.settings,
                                    .network = *assistant.network,
                                    .vault = *storage.vault,
                                    .machine = *assistant.machine,
                                    .clock = clock,
                                    .work = work},
        commandLine.devRuntime.value_or(LocalRuntimeValues::ofThisBuild(storage.folders)));
    if (commandLine.simulateFreshSetup)
        service->simulateFreshSetup();
    return service;
}

// Programs of ours are installed beside this one.
QString besideThis(const QString &name)
{
    return QCoreApplication::applicationDirPath() + u'/' + name;
}

std::unique_ptr<TextRecognizing> makeTextRecognizer(Clock &clock, Work &work)
{
    const QStringList languages = ScreenLanguages::codesFor(QLocale::system().uiLanguages());
    return std::make_unique<ScreenTextRecognizer>(work, clock, besideThis(u"morvane-read-screen"_s),
                                                  languages);
}

// What the router is given to ask in each turn; all of it outlives the router.
AIRequestRouter::Services routing(const Assistant &assistant, Storage &storage, const Secrets &secrets,
                                  Clock &clock, Work &work)
{
    const auto keyFor = [&settings = *storage.settings,
                         &keychain = secrets.keychain](const QString &baseURL) {
        return RouteConfiguration::keyFor(settings, keychain, baseURL);
    };
    const auto ollama = std::make_shared<OllamaNativeProvider>(*assistant.network, keyFor);
    return {.settings = *storage.settings,
            .keychain = secrets.keychain,
            .proofs = *assistant.proofs,
            .clock = clock,
            .work = work,
            .provider = std::make_shared<OpenAICompatibleProvider>(*assistant.network),
            .nativeOllama = ollama,
            .ollama = ollama.get(),
            .privateCloud = assistant.privateCloud->cloud,
            .localModel = assistant.localModel.get(),
            .prompts = {
                .instructions = [&prompts = *assistant.systemPrompts] { return prompts.effectivePrompt(); },
                .notes = [&memory = *assistant.memory] { return memory.promptBlock(); }},
            .tools = [&tools = *assistant.tools] { return tools.availableTools(); }};
}

} // namespace

Assistant::Assistant(const CommandLine &commandLine, Storage &storage, const Secrets &secrets,
                     const DesktopPorts &desktop, Clock &clock, Work &work)
    : networkLedger(std::make_unique<NetworkLedger>())
    , network(std::make_unique<AppNetwork>(*networkLedger, clock))
    , proofs(std::make_unique<ProofLedger>())
    , memory(std::make_unique<MemoryStore>(*storage.settings, *storage.vault, clock,
                                           MemoryStore::defaultDirectory(storage.folders)))
    , systemPrompts(std::make_unique<SystemPromptStore>(*storage.settings, *storage.vault,
                                                        SystemPromptStore::path(storage.folders)))
    , identity(std::make_unique<ServiceIdentity>(secrets.keychain))
    , extraction(std::make_unique<ExtractionService>(work, clock, besideThis(u"morvane-extract"_s)))
    , textExtraction(std::make_unique<TextExtractionService>())
    , documents(std::make_unique<DocumentImportService>(
          DocumentImportService::Parts{work, *extraction, *textExtraction, *extraction}))
    , web(std::make_unique<WebAccessService>(WebAccessService::Services{.network = *network,
                                                                        .keychain = secrets.keychain,
                                                                        .identity = *identity,
                                                                        .quotaDefaults = *storage.defaults,
                                                                        .clock = clock,
                                                                        .work = work},
                                             searchEndpoints(commandLine)))
    , hands(std::make_unique<DesktopHands>(desktop, *storage.settings, clock))
    , textRecognizer(makeTextRecognizer(clock, work))
    , screenGlance(desktop.screen ? std::make_shared<ScreenGlanceService>(*desktop.screen, *textRecognizer)
                                  : nullptr)
    , tools(std::make_unique<ToolRegistry>(ToolRegistry::Services{.settings = *storage.settings,
                                                                  .memory = *memory,
                                                                  .web = *web,
                                                                  .clock = clock,
                                                                  .desktop = hands->actions.get(),
                                                                  .screenGlance = screenGlance}))
    , privateCloud(
          std::make_unique<PrivateCloudParts>(commandLine, PrivateCloudParts::Services{.storage = storage,
                                                                                       .secrets = secrets,
                                                                                       .network = *network,
                                                                                       .proofs = *proofs,
                                                                                       .identity = *identity,
                                                                                       .clock = clock,
                                                                                       .work = work}))
    , machine(std::make_unique<LinuxMachine>())
    , localModel(makeLocalModel(commandLine, *this, storage, clock, work))
    , services(std::make_unique<AvahiServiceBrowsing>(clock))
    , router(std::make_unique<AIRequestRouter>(routing(*this, storage, secrets, clock, work)))
    , replies(std::make_unique<ReplyRunner>(*router, *tools))
{}

Assistant::~Assistant() = default;

} // namespace morvane
