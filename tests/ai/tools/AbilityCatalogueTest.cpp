#include "ai/tools/ToolFixture.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using AbilityCatalogueTest = ToolFixture;

QStringList namesOf(const std::vector<AITool> &tools)
{
    QStringList names;
    for (const AITool &tool : tools)
        names.append(tool.name);
    return names;
}

// One line for each tool: the words that small models and people were promised.
TEST_F(AbilityCatalogueTest, OffersTheEightInTheirOrder)
{
    QStringList lines;
    for (const AITool &tool : registry.availableTools()) {
        QString line = tool.name + u'(';
        for (const auto &parameter : tool.parameters)
            line += parameter.name + (parameter.kind == AITool::Parameter::Kind::number ? u":n"_s : u":s"_s) +
                    (parameter.required ? u" "_s : u"? "_s);
        lines.append(line.trimmed() + u") "_s + tool.risk.approvalVerb.value_or(u"safe"_s) + u" / "_s +
                     tool.displayName);
    }
    EXPECT_EQ(lines,
              QStringList({
                  u"remember(fact:s) safe / Remember things about you"_s,
                  u"forget(about:s) safe / Forget on request"_s,
                  u"search_web(query:s) Search the web for this / Search the web"_s,
                  u"read_web_page(url:s) safe / Read a web page"_s,
                  u"look_at_screen() Read your screen / Look at your screen"_s,
                  u"open_link(url:s) Open this link / Open links"_s,
                  u"create_calendar_event(title:s minutes_from_now:n duration_minutes:n?) Add this event / "
                  "Add calendar events"_s,
                  u"run_shortcut(name:s input:s?) Run this shortcut / Run your Shortcuts"_s,
              }));
}

TEST_F(AbilityCatalogueTest, FollowsTheSwitchesAndWhatTheBuildHas)
{
    int changes = 0;
    QObject::connect(&registry, &ToolRegistry::availabilityChanged, [&changes] { ++changes; });
    settings.setWebAccessEnabled(false);
    settings.setMemoryEnabled(false);
    EXPECT_EQ(
        namesOf(registry.availableTools()),
        QStringList({u"look_at_screen"_s, u"open_link"_s, u"create_calendar_event"_s, u"run_shortcut"_s}));
    EXPECT_EQ(changes, 2);
    EXPECT_EQ(registry.unavailableReason(u"forget"), u"Turn on Memory."_s);
    EXPECT_EQ(registry.unavailableReason(u"search_web"), u"Turn on Web access."_s);
    EXPECT_EQ(registry.unavailableReason(u"open_link"), std::nullopt);
    EXPECT_EQ(registry.unavailableReason(u"no_such_tool"), std::nullopt);
    EXPECT_FALSE(registry.isAvailable(u"no_such_tool"));

    settings.setAbilitiesEnabled(false);
    EXPECT_TRUE(registry.availableTools().empty());
    EXPECT_TRUE(registry.isAvailable(u"open_link")) << "a turn under way keeps what it was offered";
    EXPECT_EQ(registry.unavailableReason(u"search_web"), u"Abilities are switched off."_s);
    settings.setAbilitiesEnabled(true);

    screen.reset();
    ToolRegistry bare({settings, memory, web, clock});
    EXPECT_TRUE(bare.availableTools().empty());
    EXPECT_EQ(bare.unavailableReason(u"look_at_screen"), u"Screen reading isn't available in this build."_s);
    EXPECT_EQ(bare.unavailableReason(u"run_shortcut"), u"Desktop actions aren't available in this build."_s);
    settings.setScreenAwarenessEnabled(false);
    settings.setDesktopActionsEnabled(false);
    EXPECT_EQ(bare.unavailableReason(u"look_at_screen"), u"Turn on Screen awareness."_s);
    EXPECT_EQ(bare.unavailableReason(u"run_shortcut"), u"Turn on Desktop actions."_s);
}

} // namespace

} // namespace morvane
