#include "ai/routing/TurnRoute.h"

#include "ai/contract/BaseURL.h"
#include "ai/contract/ProviderError.h"
#include "ai/routing/HostPrivacy.h"
#include "ai/routing/ModelName.h"
#include "ai/routing/RouteConfiguration.h"
#include "utils/log/Log.h"
#include "utils/text/Text.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = ProviderError::Plain;

void TurnRoute::apply(const TurnRequest &turn)
{
    if (place == Place::configured && turn.visionModel) {
        configuration.model = *turn.visionModel;
        hasVisionModel = true;
        Log::info(Log::Category::AIProvider, "Image turn: routing to vision model %{public}s"_L1,
                  {configuration.model});
    } else if (place == Place::configured && turn.toolsModel) {
        configuration.model = *turn.toolsModel;
        Log::info(Log::Category::AIProvider, "Tools turn: routing to %{public}s"_L1, {configuration.model});
    }
    if (turn.outputBudget)
        configuration.maxOutputTokens = *turn.outputBudget;
    else if (place != Place::privateCloud)
        configuration.maxOutputTokens =
            RouteConfiguration::replyLimit(configuration.maxOutputTokens, configuration.baseURLString);
    configuration.purpose = u"chat"_s;
    configuration.carrying = turn.carrying;
}

JudgedPlace TurnRoute::judged() const
{
    return place == Place::privateCloud
               ? JudgedPlace::privateCloud()
               : JudgedPlace::of(configuration.baseURLString, configuration.model, privacy);
}

bool TurnRoute::keepsDataPrivate() const
{
    return place != Place::privateCloud && privacy.kind == PrivacyClass::Kind::staysPrivate &&
           HostPrivacy::staysNear(configuration.baseURLString);
}

bool TurnRoute::answersHere() const
{
    return place == Place::local && privacy.kind == PrivacyClass::Kind::staysPrivate;
}

void TurnRoute::requireUsable() const
{
    const bool isMissing = place == Place::privateCloud && configuration.baseURLString.isEmpty();
    const bool lacksModel =
        Text::trimmed(configuration.model).isEmpty() && !HostPrivacy::staysNear(configuration.baseURLString);
    if (isMissing || lacksModel)
        throw ProviderError(Plain::notConfigured);
    (void)BaseURL::validated(configuration.baseURLString);
}

void TurnRoute::requirePrivate() const
{
    if (place == Place::privateCloud || !HostPrivacy::staysNear(configuration.baseURLString))
        throw ProviderError(Plain::localModelRequired);
    if (ModelName::isOllamaCloud(configuration.model))
        throw ProviderError(ProviderError::CloudModelInPrivateMode{configuration.model});
    switch (privacy.kind) {
    case PrivacyClass::Kind::staysPrivate:
        return;
    case PrivacyClass::Kind::cloudModel:
        throw ProviderError(ProviderError::CloudModelInPrivateMode{privacy.model});
    case PrivacyClass::Kind::leavesThisNetwork:
    case PrivacyClass::Kind::unknownModel:
        throw ProviderError(Plain::localModelRequired);
    }
}

std::vector<AITool> TurnRoute::offered(std::vector<AITool> tools, bool memoryAllowed) const
{
    if (hasVisionModel || place == Place::privateCloud)
        return {};
    const bool sensitiveAllowed = keepsDataPrivate();
    std::erase_if(tools, [&](const AITool &tool) {
        const bool usesMemory = tool.name == "remember"_L1 || tool.name == "forget"_L1;
        return (usesMemory && !memoryAllowed) || (tool.name == "look_at_screen"_L1 && !sensitiveAllowed);
    });
    return tools;
}

} // namespace morvane
