#include "ai/tools/ToolFixture.h"
#include "support/TestData.h"

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

// The words that small models and people were promised.
TEST_F(AbilityCatalogueTest, OffersTheEightInTheirOrder)
{
    QStringList lines;
    for (const AITool &tool : registry.availableTools()) {
        lines += {tool.name + u": "_s + tool.displayName,
                  u"    "_s + tool.risk.approvalVerb.value_or(u"(runs unasked)"_s),
                  u"    "_s + tool.description, u"    "_s + tool.userDescription};
        for (const auto &parameter : tool.parameters)
            lines += u"    - "_s + parameter.name +
                     (parameter.kind == AITool::Parameter::Kind::number ? u", a number"_s : QString()) +
                     (parameter.required ? u": "_s : u", optional: "_s) + parameter.description;
    }
    EXPECT_EQ((lines.join(u'\n') + u'\n').toStdString(), TestData::text("ai/abilities.txt"));
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
