#include "ai/routing/RouteConfiguration.h"

#include "ai/routing/HostPrivacy.h"
#include "ai/routing/KeyOrigin.h"
#include "ai/routing/LocalModelServing.h"
#include "ai/routing/PrivateCloud.h"
#include "persistence/SettingsStore.h"
#include "security/KeychainServicing.h"
#include "utils/text/Text.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr double turnTimeout = 120.0; // seconds

AIConfiguration common(const SettingsStore &settings, const QString &identity)
{
    AIConfiguration configuration;
    configuration.temperature = settings.temperature();
    configuration.maxOutputTokens = settings.maxOutputTokens();
    configuration.systemPrompt = identity;
    configuration.requestTimeout = turnTimeout;
    configuration.preferStreaming = true;
    return configuration;
}

} // namespace

QString RouteConfiguration::apiKeyAccount()
{
    return u"ai-provider-api-key"_s;
}

std::optional<QString> RouteConfiguration::keyFor(const SettingsStore &settings, KeychainServicing &keychain,
                                                  const QString &baseURL)
{
    return KeyOrigin::allows(settings, baseURL) ? keychain.read(apiKeyAccount()) : std::nullopt;
}

AIConfiguration RouteConfiguration::configured(const SettingsStore &settings, KeychainServicing &keychain,
                                               const QString &identity)
{
    AIConfiguration configuration = common(settings, identity);
    configuration.baseURLString = settings.baseURLString();
    configuration.apiKey = keyFor(settings, keychain, configuration.baseURLString);
    configuration.model = settings.model();
    return configuration;
}

AIConfiguration RouteConfiguration::privateCloud(const SettingsStore &settings, const PrivateCloud &cloud,
                                                 const QString &identity)
{
    AIConfiguration configuration = common(settings, identity);
    configuration.baseURLString = cloud.baseURL();
    configuration.apiKey = cloud.apiKey ? cloud.apiKey() : std::nullopt;
    const QString named = Text::trimmed(settings.hostedRelayModel());
    configuration.model = named.isEmpty() ? u"e2ee-glm-5-3-flash"_s : named;
    configuration.thinksLonger = settings.privateCloudThinksLonger();
    return configuration;
}

std::int64_t RouteConfiguration::replyLimit(std::int64_t configured, const QString &baseURL)
{
    return HostPrivacy::staysNear(baseURL) ? std::max(configured, smallestLocalOutput) : configured;
}

std::optional<AIConfiguration> RouteConfiguration::local(const SettingsStore &settings,
                                                         const LocalModelServing *runtime,
                                                         const QString &identity)
{
    const bool isReady = runtime && runtime->state() == LocalModelServing::State::ready;
    if (!isReady || runtime->model().isEmpty())
        return std::nullopt;
    AIConfiguration configuration = common(settings, identity);
    configuration.baseURLString = runtime->baseURL();
    configuration.model = runtime->model();
    configuration.maxOutputTokens = std::max(configuration.maxOutputTokens, smallestLocalOutput);
    return configuration;
}

} // namespace morvane
