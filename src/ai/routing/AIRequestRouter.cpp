#include "ai/routing/AIRequestRouter.h"

#include "ai/contract/ProviderError.h"
#include "ai/prompts/SystemPrompt.h"
#include "ai/routing/KeyOrigin.h"
#include "ai/routing/RouteConfiguration.h"
#include "async/Clock.h"
#include "persistence/SettingsStore.h"
#include "utils/log/Log.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Ability = ModelCapabilities::Ability;
using Place = TurnRoute::Place;
using Plain = ProviderError::Plain;

AIRequestRouter::AIRequestRouter(Services services, QObject *parent)
    : QObject(parent)
    , m_services(std::move(services))
    , m_hosts(m_services.clock, m_services.work)
    , m_inventory(m_services.ollama, m_services.clock)
    , m_detection(m_services.ollama, m_inventory)
    , m_capabilities(m_services.ollama, m_detection, m_inventory, m_services.clock)
    , m_judge(m_hosts, m_inventory, m_detection)
    , m_burst(m_services.clock)
{
    KeyOrigin::adopt(m_services.settings);
    for (const auto changed :
         {&SettingsStore::baseURLStringChanged, &SettingsStore::modelChanged,
          &SettingsStore::hostedChatEnabledChanged, &SettingsStore::hostedRelayEncryptedChanged})
        connect(&m_services.settings, changed, this, &AIRequestRouter::sourceChanged);
    connect(&m_services.settings, &SettingsStore::apiKeyOriginChanged, this, [this] {
        m_detection.forget();
        m_capabilities.forget();
    });
    if (m_services.localModel)
        connect(m_services.localModel, &LocalModelServing::changed, this, [this] {
            m_capabilities.forget();
            Q_EMIT sourceChanged();
        });
}

QString AIRequestRouter::apiKeyAccount()
{
    return RouteConfiguration::apiKeyAccount();
}

// Models

QCoro::Task<std::optional<bool>> AIRequestRouter::seesImages(std::stop_token stop)
{
    if (m_injectedProvider || usesPrivateCloud())
        co_return std::nullopt;
    co_return co_await m_capabilities.has(Ability::vision, m_services.settings.baseURLString(),
                                          m_services.settings.model(), stop);
}

// Images go to no server outside, so none is asked what it makes of them.
QCoro::Task<std::optional<QString>>
AIRequestRouter::visionModel(std::vector<ContextBuilder::HistoryItem> history, std::stop_token stop)
{
    const bool hasImages =
        std::any_of(history.begin(), history.end(), [](const auto &item) { return !item.images.isEmpty(); });
    if (!hasImages || !HostPrivacy::staysNear(m_services.settings.baseURLString()))
        co_return std::nullopt;
    co_return co_await standIn(Ability::vision, stop);
}

QCoro::Task<std::optional<QString>> AIRequestRouter::toolsModel(SensitiveDataSet carrying,
                                                                std::stop_token stop)
{
    const bool mayAsk = !carrying || HostPrivacy::staysNear(m_services.settings.baseURLString());
    if (!m_services.tools || m_services.tools().empty() || !mayAsk)
        co_return std::nullopt;
    co_return co_await standIn(Ability::tools, stop);
}

QCoro::Task<std::optional<QString>> AIRequestRouter::standIn(Ability ability, std::stop_token stop)
{
    if (m_injectedProvider || usesPrivateCloud())
        co_return std::nullopt;
    const auto check = m_lifeline.check(stop);
    const QString baseURL = m_services.settings.baseURLString();
    const QString model = m_services.settings.model();
    const std::optional<bool> isAble = co_await m_capabilities.has(ability, baseURL, model, stop);
    check();
    if (isAble.value_or(true)) // able, or its server doesn't tell
        co_return std::nullopt;
    co_return co_await m_capabilities.standIn(ability, baseURL, stop);
}

QCoro::Task<> AIRequestRouter::waitForLocalModel(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    Clock &clock = m_services.clock;
    const auto deadline = clock.elapsed() + 30s;
    try {
        while (m_services.localModel &&
               m_services.localModel->state() == LocalModelServing::State::starting &&
               clock.elapsed() < deadline) {
            co_await pause(clock, 250ms, stop);
            check();
        }
    } catch (const CancelledError &) {
        // Whoever stopped it sees to the rest.
    }
}

// Turns

AIConfiguration AIRequestRouter::settingsConfiguration() const
{
    return RouteConfiguration::configured(m_services.settings, m_services.keychain,
                                          m_services.prompts.identity());
}

std::optional<AIConfiguration> AIRequestRouter::localConfiguration() const
{
    return RouteConfiguration::local(m_services.settings, m_services.localModel,
                                     m_services.prompts.identity());
}

std::optional<TurnRoute> AIRequestRouter::localRoute(const TurnRequest &turn) const
{
    auto configuration = localConfiguration();
    if (!configuration)
        return std::nullopt;
    TurnRoute route{std::move(*configuration), Place::local, false, {}};
    route.apply(turn);
    return route;
}

// A turn that carries private data is not counted: it won't go to the private cloud.
TurnRoute AIRequestRouter::chosenRoute(const TurnRequest &turn)
{
    TurnRoute route;
    if (usesPrivateCloud()) {
        if (!turn.carrying && m_burst.isFull()) {
            Log::info(Log::Category::AIProvider, "Hosted burst limit; routing to local model"_L1);
            if (auto local = localRoute(turn))
                return *local;
            throw ProviderError(Plain::hostedBurstLimited);
        }
        route.configuration = RouteConfiguration::privateCloud(m_services.settings, m_services.privateCloud,
                                                               m_services.prompts.identity());
        route.place = Place::privateCloud;
    } else {
        route.configuration = settingsConfiguration();
        if (m_services.privateCloud.isAt(route.configuration.baseURLString))
            route.place = Place::privateCloud;
    }
    route.apply(turn);
    return route;
}

// Private data won't go where the text of the host already forbids it, so nobody there or on the way is
// asked.
QCoro::Task<PrivacyClass> AIRequestRouter::privacyOf(TurnRoute route, std::stop_token stop)
{
    const AIConfiguration &configuration = route.configuration;
    const bool isNear = HostPrivacy::staysNear(configuration.baseURLString);
    if (route.place == Place::privateCloud || (!isNear && (configuration.carrying || m_injectedProvider)))
        co_return PrivacyClass{PrivacyClass::Kind::leavesThisNetwork, {}};
    if (m_injectedProvider)
        co_return PrivacyClass{PrivacyClass::Kind::staysPrivate, {}};
    const ChatSource before = chatSource();
    const auto check = m_lifeline.check(stop);
    const PrivacyClass judged =
        co_await m_judge.judge(configuration.baseURLString, configuration.model, stop);
    check();
    if (chatSource() != before)
        Q_EMIT sourceChanged();
    co_return PrivacyClass(judged);
}

QCoro::Task<PreparedRequest> AIRequestRouter::prepareRequest(TurnRequest turn, std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    check();
    TurnRoute route = chosenRoute(turn);
    if (!turn.carrying) // one that carries may still move
        route.requireUsable();
    const PrivacyClass chosen = co_await privacyOf(route, stop);
    check();
    route.privacy = chosen;
    std::optional<TurnRoute> local;
    if (turn.carrying && !route.keepsDataPrivate())
        local = localRoute(turn);
    if (local) {
        route = *local;
        const PrivacyClass moved = co_await privacyOf(route, stop);
        check();
        route.privacy = moved;
    }
    if (turn.carrying) {
        route.requireUsable();
        route.requirePrivate();
    } else if (route.place == Place::local && !route.answersHere()) { // no service steps in for another
        throw ProviderError(Plain::hostedBurstLimited);
    }
    if (route.place == Place::privateCloud)
        m_burst.note();
    co_return assembled(turn, route);
}

PreparedRequest AIRequestRouter::assembled(const TurnRequest &turn, const TurnRoute &route) const
{
    PreparedRequest prepared;
    prepared.configuration = route.configuration;
    prepared.configuration.proofRow = QUuid::createUuid();
    prepared.place = route.judged();
    prepared.memoryAllowed = route.keepsDataPrivate() && turn.memoryAllowed;
    if (m_services.tools)
        prepared.tools = route.offered(m_services.tools(), prepared.memoryAllowed);
    std::optional<QString> notes;
    if (prepared.memoryAllowed && !m_injectedProvider)
        notes = m_services.prompts.notesBlock();
    if (notes) // from here on the request carries them, whatever the chat held
        prepared.configuration.carrying |= SensitiveData::memory;
    prepared.configuration.systemPrompt =
        SystemPrompt::ofTurn(route.configuration.systemPrompt, prepared.tools, notes);
    prepared.messages = ContextBuilder::build(turn.history, m_services.settings.maxContextMessages(),
                                              prepared.configuration.systemPrompt, turn.rollingSummary);
    return prepared;
}

// Providers

std::shared_ptr<AIProvider> AIRequestRouter::privateCloudProvider()
{
    if (!m_privateCloudProvider && m_services.privateCloud.makeProvider)
        m_privateCloudProvider = m_services.privateCloud.makeProvider();
    if (!m_privateCloudProvider)
        throw ProviderError(Plain::notConfigured);
    return m_privateCloudProvider;
}

QCoro::Task<std::shared_ptr<AIProvider>> AIRequestRouter::provider(AIConfiguration configuration,
                                                                   std::stop_token stop)
{
    const JudgedPlace place = placeOf(configuration.baseURLString, configuration.model);
    co_return co_await providerAt(place, std::move(configuration), std::move(stop));
}

QCoro::Task<std::shared_ptr<AIProvider>>
AIRequestRouter::providerAt(JudgedPlace place, AIConfiguration configuration, std::stop_token stop)
{
    // Copies on purpose: QCoro 0.8 moves out of the lvalue that is returned.
    if (m_injectedProvider)
        co_return std::shared_ptr<AIProvider>(m_injectedProvider);
    if (m_services.privateCloud.isAt(configuration.baseURLString))
        co_return privateCloudProvider();
    m_services.proofs.append({.id = configuration.proofRow,
                              .startedAt = m_services.clock.now(),
                              .place = place.inLedger(configuration.model),
                              .purpose = configuration.purpose.value_or(u"chat"_s),
                              .carrying = configuration.carrying});
    const std::shared_ptr<AIConnectionTesting> speaking =
        co_await speakerAt(configuration.baseURLString, stop);
    co_return std::shared_ptr<AIProvider>(speaking);
}

QCoro::Task<std::shared_ptr<AIConnectionTesting>> AIRequestRouter::speakerAt(QString baseURL,
                                                                             std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    OllamaDetection::Answer isOllama = OllamaDetection::Answer::no;
    if (m_services.nativeOllama) {
        isOllama = co_await m_detection.isOllama(baseURL, stop);
        check();
    }
    co_return std::shared_ptr<AIConnectionTesting>(
        isOllama == OllamaDetection::Answer::yes ? m_services.nativeOllama : m_services.provider);
}

QCoro::Task<OpenedTurn> AIRequestRouter::openTurn(TurnRequest turn, std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    check();
    if (turn.isContinuation)
        turn.outputBudget = outputBudget();
    if (turn.carrying) {
        co_await waitForLocalModel(stop);
        check();
    }
    const SettingsStore &settings = m_services.settings;
    const std::pair asked(settings.baseURLString(), settings.model());
    const std::optional<QString> seeing = co_await visionModel(turn.history, stop);
    check();
    turn.visionModel = seeing;
    if (!seeing) {
        const std::optional<QString> able = co_await toolsModel(turn.carrying, stop);
        check();
        turn.toolsModel = able;
    }
    if (std::pair(settings.baseURLString(), settings.model()) != asked) {
        // They stand in for that model at that server, and for no other.
        turn.visionModel.reset();
        turn.toolsModel.reset();
    }
    const PreparedRequest prepared = co_await prepareRequest(std::move(turn), stop);
    check();
    const std::shared_ptr<AIProvider> provider =
        co_await providerAt(prepared.place, prepared.configuration, stop);
    check();
    co_return OpenedTurn{prepared, provider, std::make_shared<QUuid>(prepared.configuration.proofRow)};
}

AsyncStream<AIStreamEvent> AIRequestRouter::stream(OpenedTurn turn)
{
    PreparedRequest &request = turn.request;
    if (request.place.source.kind != ChatSource::Kind::morvaneCloud)
        return turn.provider->streamReply(std::move(request.messages), std::move(request.configuration),
                                          std::move(request.tools));
    const auto living = [this, check = m_lifeline.check({})]() -> AIRequestRouter & {
        check();
        return *this;
    };
    return LocalFallbackStream::relay(
        std::move(request), std::move(turn.provider),
        {.noteRefusal = [living](const QString &reason) { living().setRefusal(reason); },
         .noteRow = [row = turn.proofRow](const QUuid &another) { *row = another; },
         .standby =
             [living, row = turn.proofRow](AIConfiguration refused, std::stop_token stop) {
                 return living().standby(std::move(refused), row, std::move(stop));
             }});
}

QCoro::Task<std::optional<LocalFallbackStream::Decisions::Place>>
AIRequestRouter::standby(AIConfiguration refused, std::shared_ptr<QUuid> proofRow, std::stop_token stop)
{
    using Standby = LocalFallbackStream::Decisions::Place;
    const auto check = m_lifeline.check(stop);
    std::optional<AIConfiguration> configuration = localConfiguration();
    if (!configuration)
        co_return std::nullopt;
    configuration->purpose = refused.purpose;
    configuration->carrying = refused.carrying;
    TurnRoute route{std::move(*configuration), Place::local, false, {}};
    const PrivacyClass judged = co_await privacyOf(route, stop);
    check();
    route.privacy = judged;
    if (!route.answersHere())
        co_return std::nullopt;
    *proofRow = route.configuration.proofRow = QUuid::createUuid();
    const std::shared_ptr<AIProvider> provider =
        co_await providerAt(route.judged(), route.configuration, stop);
    co_return Standby{route.configuration, provider};
}

QUuid AIRequestRouter::noteCarrying(const QUuid &row, SensitiveDataSet carrying)
{
    std::optional<ProofLedger::Entry> entry = m_services.proofs.find(row);
    if (!entry)
        return row;
    entry->id = QUuid::createUuid();
    entry->startedAt = m_services.clock.now();
    entry->carrying = carrying;
    return m_services.proofs.append(std::move(*entry));
}

QCoro::Task<QString> AIRequestRouter::testConnection(AIConfiguration configuration, std::stop_token stop)
{
    const std::shared_ptr<AIConnectionTesting> tested = co_await speakerAt(configuration.baseURLString, stop);
    co_return co_await tested->testConnection(std::move(configuration), std::move(stop));
}

QCoro::Task<ReplyTrial> AIRequestRouter::tryReply(AIConfiguration configuration, std::vector<AITool> tools,
                                                  std::stop_token stop)
{
    const std::shared_ptr<AIConnectionTesting> tried = co_await speakerAt(configuration.baseURLString, stop);
    co_return co_await tried->tryReply(std::move(configuration), std::move(tools), std::move(stop));
}

} // namespace morvane
