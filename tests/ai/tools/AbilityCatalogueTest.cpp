#include "ai/tools/ToolFixture.h"
#include "support/TestData.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using AbilityCatalogueTest = ToolFixture;

// What each ability lacks; nothing for those that can be used.
QStringList lacking(const ToolRegistry &registry)
{
    QStringList reasons;
    for (const char16_t *name :
         {u"forget", u"search_web", u"look_at_screen", u"run_shortcut", u"no_such_tool"})
        reasons.append(registry.unavailableReason(name).value_or(QString()));
    return reasons;
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
    EXPECT_EQ(changes, 2);
    EXPECT_EQ(lacking(registry), QStringList({u"Turn on Memory."_s, u"Turn on Web access."_s, {}, {}, {}}));
    const auto offered = registry.availableTools();
    ASSERT_EQ(offered.size(), 4U);
    EXPECT_EQ(offered.front().name + u' ' + offered.back().name, u"look_at_screen run_shortcut"_s);

    settings.setWebAccessEnabled(true);
    world->service = WebAccessing::SearchService::none;
    EXPECT_EQ(lacking(registry)[1], u"Add a search key in Settings → Abilities."_s);
    EXPECT_EQ(registry.availableTools().front().name, u"read_web_page"_s);
    settings.setWebAccessEnabled(false);

    settings.setAbilitiesEnabled(false);
    EXPECT_TRUE(registry.availableTools().empty());
    EXPECT_TRUE(registry.isAvailable(u"open_link")) << "a turn under way keeps what it was offered";
    EXPECT_FALSE(registry.isAvailable(u"no_such_tool"));
    const QString off = u"Abilities are switched off."_s;
    EXPECT_EQ(lacking(registry), QStringList({off, off, {}, {}, {}}));
    settings.setAbilitiesEnabled(true);

    const ToolRegistry bare({settings, memory, *world, clock});
    EXPECT_TRUE(bare.availableTools().empty());
    EXPECT_EQ(lacking(bare).mid(2, 2), QStringList({u"Screen reading isn't available in this build."_s,
                                                    u"Desktop actions aren't available in this build."_s}));
    settings.setScreenAwarenessEnabled(false);
    settings.setDesktopActionsEnabled(false);
    EXPECT_EQ(lacking(bare).mid(2, 2),
              QStringList({u"Turn on Screen awareness."_s, u"Turn on Desktop actions."_s}));
}

} // namespace

} // namespace morvane
