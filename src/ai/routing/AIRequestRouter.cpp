#include "ai/routing/AIRequestRouter.h"

#include "ai/contract/BaseURL.h"
#include "ai/contract/ProviderError.h"
#include "network/PrivateNetworkAddress.h"
#include "persistence/SettingsStore.h"
#include "security/KeychainServicing.h"
#include "utils/Clock.h"
#include "utils/Product.h"
#include "utils/Text.h"

#include <QUrl>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr double turnTimeout = 120.0; // seconds
constexpr std::int64_t smallestLocalOutput = 4096;

QString identityPrompt()
{
    const QString name(Product::name);
    return u"You are "_s + name +
           u", a private AI assistant on the user's Mac. You are helpful, calm and concise, and you respect "
           u"the "
           "user's privacy. You do not claim to see the user's screen, applications, windows, or files "
           "unless the "
           "user has explicitly provided that content in this conversation. If asked about something on the "
           "user's "
           "screen that was not provided, explain that you can only see what the user shares with you."_s +
           u"\n\nYour name is "_s + name + u"."_s;
}

// Judged by the text of the address alone.
bool staysNear(const QString &baseURLString)
{
    using PrivateNetworkAddress::HostClass;
    const auto hostClass = PrivateNetworkAddress::classify(QUrl(Text::trimmed(baseURLString)).host());
    return hostClass == HostClass::thisMac || hostClass == HostClass::localNetwork;
}

ProofLedger::Place placeOf(const ChatSource &source, const QString &model)
{
    using Kind = ProofLedger::Place::Kind;
    switch (source.kind) {
    case ChatSource::Kind::thisMac:
    case ChatSource::Kind::notConfigured:
        return {Kind::thisMac, model, {}};
    case ChatSource::Kind::network:
        return {Kind::network, model, source.host};
    case ChatSource::Kind::ollamaCloud:
        return {Kind::ollamaCloud, model, {}};
    case ChatSource::Kind::morvaneCloud:
        return {Kind::morvaneCloud, model, {}};
    case ChatSource::Kind::customCloud:
        return {Kind::yourOwnService, model, source.host};
    }
    return {};
}

} // namespace

AIRequestRouter::AIRequestRouter(SettingsStore &settings, KeychainServicing &keychain, ProofLedger &proofs,
                                 Clock &clock, std::shared_ptr<AIConnectionTesting> provider)
    : m_settings(settings)
    , m_keychain(keychain)
    , m_proofs(proofs)
    , m_clock(clock)
    , m_provider(std::move(provider))
{}

QString AIRequestRouter::apiKeyAccount()
{
    return u"ai-provider-api-key"_s;
}

ChatSource AIRequestRouter::chatSource() const
{
    return ChatSource::of(m_settings.baseURLString(), m_settings.model());
}

AIConfiguration AIRequestRouter::settingsConfiguration() const
{
    AIConfiguration configuration;
    configuration.baseURLString = m_settings.baseURLString();
    configuration.apiKey = m_keychain.read(apiKeyAccount());
    configuration.model = m_settings.model();
    configuration.temperature = m_settings.temperature();
    configuration.maxOutputTokens = m_settings.maxOutputTokens();
    configuration.systemPrompt = identityPrompt();
    configuration.requestTimeout = turnTimeout;
    configuration.preferStreaming = true;
    return configuration;
}

// Capabilities are asked of servers that speak the native interface, which no provider here does yet.
QCoro::Task<std::optional<QString>> AIRequestRouter::visionModel(std::vector<ContextBuilder::HistoryItem>,
                                                                 std::stop_token)
{
    co_return std::nullopt;
}

QCoro::Task<std::optional<QString>> AIRequestRouter::toolsModel(std::stop_token)
{
    co_return std::nullopt;
}

// There is no managed runtime yet that could be starting.
QCoro::Task<> AIRequestRouter::waitForLocalModel(std::stop_token)
{
    co_return;
}

QCoro::Task<PreparedRequest> AIRequestRouter::prepareRequest(TurnRequest turn, std::stop_token stop)
{
    throwIfStopped(stop);
    PreparedRequest prepared;
    AIConfiguration &configuration = prepared.configuration;
    configuration = settingsConfiguration();
    if (turn.visionModel)
        configuration.model = *turn.visionModel;
    else if (turn.toolsModel)
        configuration.model = *turn.toolsModel;

    const bool isNear = staysNear(configuration.baseURLString);
    if (turn.outputBudget)
        configuration.maxOutputTokens = *turn.outputBudget;
    else if (isNear)
        configuration.maxOutputTokens = std::max(configuration.maxOutputTokens, smallestLocalOutput);
    configuration.purpose = u"chat"_s;
    configuration.carrying = turn.carrying;

    if (!isNear && Text::trimmed(configuration.model).isEmpty())
        throw ProviderError(ProviderError::Plain::notConfigured);
    (void)BaseURL::validated(configuration.baseURLString);
    if (turn.carrying && !isNear)
        throw ProviderError(ProviderError::Plain::localModelRequired);

    prepared.messages = ContextBuilder::build(turn.history, m_settings.maxContextMessages(),
                                              configuration.systemPrompt, turn.rollingSummary);
    co_return prepared;
}

QCoro::Task<std::shared_ptr<AIProvider>> AIRequestRouter::provider(AIConfiguration configuration,
                                                                   std::stop_token)
{
    // Copies on purpose: QCoro 0.8 moves out of the lvalue that is returned.
    if (m_injectedProvider)
        co_return std::shared_ptr<AIProvider>(m_injectedProvider);
    const auto source = ChatSource::of(configuration.baseURLString, configuration.model);
    m_proofs.append({.id = QUuid::createUuid(),
                     .startedAt = m_clock.now(),
                     .place = placeOf(source, configuration.model),
                     .purpose = configuration.purpose.value_or(u"chat"_s),
                     .carrying = configuration.carrying});
    co_return std::shared_ptr<AIProvider>(m_provider);
}

AsyncStream<AIStreamEvent> AIRequestRouter::stream(PreparedRequest request,
                                                   std::shared_ptr<AIProvider> provider)
{
    return provider->streamReply(std::move(request.messages), std::move(request.configuration),
                                 std::move(request.tools));
}

QCoro::Task<QString> AIRequestRouter::testConnection(AIConfiguration configuration, std::stop_token stop)
{
    return m_provider->testConnection(std::move(configuration), std::move(stop));
}

std::int64_t AIRequestRouter::outputBudget() const
{
    const std::int64_t limit = m_settings.maxOutputTokens();
    return staysNear(m_settings.baseURLString()) ? std::max<std::int64_t>(limit * 4, 8192)
                                                 : std::clamp<std::int64_t>(limit * 2, 2048, 4096);
}
