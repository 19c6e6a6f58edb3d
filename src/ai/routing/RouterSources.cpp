// Where replies come from by the settings: how it is shown, what is said about it, and what can be chosen.

#include "ai/routing/AIRequestRouter.h"
#include "ai/routing/RouteConfiguration.h"
#include "persistence/SettingsStore.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Text.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

// Before a place has been looked at, only its address and the model's name speak.
JudgedPlace AIRequestRouter::placeOf(const QString &baseURL, const QString &model) const
{
    return JudgedPlace::of(baseURL, model, m_judge.known(baseURL, model));
}

ChatSource AIRequestRouter::configuredSource() const
{
    return placeOf(m_services.settings.baseURLString(), m_services.settings.model()).source;
}

bool AIRequestRouter::usesPrivateCloud() const
{
    const SettingsStore &settings = m_services.settings;
    return settings.hostedChatEnabled() && configuredSource().kind != ChatSource::Kind::customCloud &&
           settings.hostedRelayEncrypted() && !m_lastEnclaveRefusal;
}

ChatSource AIRequestRouter::chatSource() const
{
    return usesPrivateCloud() ? ChatSource{ChatSource::Kind::morvaneCloud, {}, {}} : configuredSource();
}

bool AIRequestRouter::isConfigured() const
{
    const ChatSource source = chatSource();
    return source.kind == ChatSource::Kind::morvaneCloud ||
           (source.kind != ChatSource::Kind::notConfigured &&
            !Text::trimmed(m_services.settings.model()).isEmpty());
}

QString AIRequestRouter::sourceLabel() const
{
    const ChatSource source = chatSource();
    const bool isRelay = source.kind == ChatSource::Kind::morvaneCloud && m_services.privateCloud.devRelay;
    return isRelay ? u"Private cloud (dev relay)"_s : source.label();
}

std::optional<PrivacyNotice> AIRequestRouter::privacyNotice() const
{
    return PrivacyNotice::of(chatSource(), m_services.settings.baseURLString());
}

std::optional<QString> AIRequestRouter::privateCloudNotice() const
{
    const ChatSource source = chatSource();
    if (m_lastEnclaveRefusal)
        return u"Private cloud is off: the last hardware proof did not verify on this %1. Replies run %2 "
               u"until you try Private cloud again."_s.arg(DesktopWords::here().device,
                                                           source.whereRepliesRun());
    if (source.kind == ChatSource::Kind::customCloud && m_services.settings.hostedChatEnabled())
        return SourceOption::customServiceNotice();
    return std::nullopt;
}

void AIRequestRouter::lookAhead()
{
    TurnRoute route;
    route.configuration.baseURLString = m_services.settings.baseURLString();
    route.configuration.model = m_services.settings.model();
    const AIConfiguration &place = route.configuration;
    const bool isWorthIt = m_services.ollama && !m_injectedProvider && !usesPrivateCloud() &&
                           !place.model.isEmpty() && HostPrivacy::staysNear(place.baseURLString) &&
                           !m_judge.known(place.baseURLString, place.model);
    if (isWorthIt)
        m_lookAhead =
            TaskHandle::start([this, &route](std::stop_token stop) { return learn(route, std::move(stop)); });
}

QCoro::Task<> AIRequestRouter::learn(TurnRoute route, std::stop_token stop)
{
    co_await privacyOf(std::move(route), std::move(stop)); // tells by itself what has changed
}

std::vector<SourceOption> AIRequestRouter::sources() const
{
    const ChatSource cloud{ChatSource::Kind::morvaneCloud, {}, {}};
    const ChatSource configured = configuredSource();
    return SourceOption::all(
        {.active = chatSource(),
         .configured = configured,
         .privateCloudName =
             m_services.privateCloud.devRelay ? u"Private cloud (dev relay)"_s : cloud.label(),
         .knowsPrivateCloud =
             m_services.privateCloud.makeProvider && !m_services.privateCloud.baseURL().isEmpty(),
         .offersSealedChats = m_services.settings.hostedRelayEncrypted(),
         .local = m_services.localModel ? m_services.localModel->state() : LocalModelServing::State::absent,
         .model = m_services.settings.model()});
}

void AIRequestRouter::choose(SourceOption::Choice choice)
{
    const bool isCloud = choice == SourceOption::Choice::privateCloud;
    if (isCloud)
        tryPrivateCloudAgain();
    m_services.settings.setHostedChatEnabled(isCloud);
}

void AIRequestRouter::tryPrivateCloudAgain()
{
    setRefusal(std::nullopt);
}

void AIRequestRouter::setRefusal(std::optional<QString> reason)
{
    if (m_lastEnclaveRefusal == reason)
        return;
    m_lastEnclaveRefusal = std::move(reason);
    Q_EMIT sourceChanged();
}

std::int64_t AIRequestRouter::replyLimit() const
{
    const SettingsStore &settings = m_services.settings;
    return RouteConfiguration::replyLimit(settings.maxOutputTokens(), settings.baseURLString());
}

std::int64_t AIRequestRouter::outputBudget() const
{
    const std::int64_t limit = m_services.settings.maxOutputTokens();
    const bool isNear = !usesPrivateCloud() && HostPrivacy::staysNear(m_services.settings.baseURLString());
    return isNear ? std::max<std::int64_t>(limit * 4, 8192) : std::clamp<std::int64_t>(limit * 2, 2048, 4096);
}

} // namespace morvane
