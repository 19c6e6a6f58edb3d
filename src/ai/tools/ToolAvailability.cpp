// Which abilities a model is offered, and what Settings says of the others.

#include "ai/tools/ToolRegistry.h"
#include "persistence/SettingsStore.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

namespace morvane {

using namespace Qt::StringLiterals;

std::vector<AITool> ToolRegistry::availableTools() const
{
    std::vector<AITool> available;
    if (!m_services.settings.abilitiesEnabled())
        return available;
    for (const AITool &tool : AbilityCatalogue::all()) {
        if (isAvailable(tool.name))
            available.push_back(tool);
    }
    return available;
}

bool ToolRegistry::isAvailable(QStringView name) const
{
    const auto ability = AbilityCatalogue::named(name);
    return ability && isAvailable(*ability);
}

bool ToolRegistry::isAvailable(Ability ability) const
{
    const SettingsStore &settings = m_services.settings;
    switch (ability) {
    case Ability::remember:
    case Ability::forget:
        return settings.memoryEnabled();
    case Ability::searchWeb:
        return settings.webAccessEnabled() && canSearch();
    case Ability::readWebPage:
        return settings.webAccessEnabled();
    case Ability::lookAtScreen:
        return settings.screenAwarenessEnabled() && !m_services.screenGlance.expired();
    case Ability::openLink:
    case Ability::createCalendarEvent:
    case Ability::runShortcut:
        return settings.desktopActionsEnabled() && m_services.desktop;
    }
    return false;
}

bool ToolRegistry::canSearch() const
{
    return m_services.web.searchService() != WebAccessing::SearchService::none;
}

std::optional<QString> ToolRegistry::unavailableReason(QStringView name) const
{
    const auto ability = AbilityCatalogue::named(name);
    if (!ability || isAvailable(*ability))
        return std::nullopt;
    return reasonFor(*ability);
}

QString ToolRegistry::reasonFor(Ability ability) const
{
    const SettingsStore &settings = m_services.settings;
    if (!settings.abilitiesEnabled())
        return u"Abilities are switched off."_s;
    switch (ability) {
    case Ability::remember:
    case Ability::forget:
        return u"Turn on Memory."_s;
    case Ability::searchWeb:
    case Ability::readWebPage:
        return settings.webAccessEnabled() ? u"Add a search key in Settings → Abilities."_s
                                           : u"Turn on Web access."_s;
    case Ability::lookAtScreen:
        return settings.screenAwarenessEnabled() ? u"Screen reading isn't available in this build."_s
                                                 : u"Turn on Screen awareness."_s;
    case Ability::openLink:
    case Ability::createCalendarEvent:
    case Ability::runShortcut:
        return settings.desktopActionsEnabled() ? u"Desktop actions aren't available in this build."_s
                                                : u"Turn on Desktop actions."_s;
    }
    return u"It is switched off."_s;
}

std::optional<QString> ToolRegistry::relaunchHint(QStringView name) const
{
    if (AbilityCatalogue::named(name) != Ability::lookAtScreen || !isAvailable(name) ||
        !m_screenGlanceNeedsRelaunch)
        return std::nullopt;
    const QString product(Product::name);
    return u"Quit %1 and open it again: %2."_s.arg(product, DesktopWords::here().screenPermissionRule);
}

} // namespace morvane
