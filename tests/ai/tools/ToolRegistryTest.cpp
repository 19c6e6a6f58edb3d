#include "ai/tools/ToolFixture.h"
#include "async/CancelledError.h"
#include "memory/MemoryFile.h"
#include "support/LogCapture.h"
#include "utils/files/PrivateFile.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using ToolRegistryTest = ToolFixture;

TEST_F(ToolRegistryTest, AFailureBecomesWordsForTheModel)
{
    const auto open = [this] { return dispatch(usual(u"open_link"_s), turnOf()).content; };
    world->desktopError = failure(WebAccessError(WebAccessError::Plain::searchKeyRejected));
    EXPECT_EQ(open(),
              u"Error: The search service rejected that key. Check the key in Settings → Abilities."_s);
    const LogCapture log;
    world->desktopError = failure(std::runtime_error("secret detail"));
    EXPECT_EQ(open(), u"Error: That didn't work."_s);
    answer = ApprovalAnswer::declined;
    open();
    EXPECT_EQ(log.lines(), QStringList({u"ai-provider: Tool open_link failed: <private>"_s,
                                        u"ai-provider: Tool open_link declined by the user"_s}));
}

TEST_F(ToolRegistryTest, NotesThatCannotBeReadAreNeitherSavedNorForgotten)
{
    const QTemporaryDir folder;
    PrivateFile::write(folder.filePath(u"memory.md"_s), QByteArray(MemoryFile::maxBytes + 1, 'x'));
    MemoryStore unreadable(settings, vault, clock, folder.path());
    ToolRegistry overIt({settings, unreadable, *world, clock});
    for (const auto &name : {u"remember"_s, u"forget"_s}) {
        const auto told = TestWait::await(overIt.dispatch(usual(name), turnOf()));
        EXPECT_TRUE(told.isError && told.content.contains(u"can't be read"_s)) << told.content.toStdString();
    }
}

TEST_F(ToolRegistryTest, OnlyAPermissionCallsForAttention)
{
    using Case = ScreenGlanceError::Case;
    const auto look = [this](Case reason) {
        world->screenError = failure(ScreenGlanceError(reason));
        const int before = attentions;
        const AIToolResult result = dispatch(usual(u"look_at_screen"_s), turnOf());
        EXPECT_TRUE(result.isError);
        return attentions - before;
    };
    EXPECT_EQ(look(Case::captureFailed) + look(Case::noTextFound) + look(Case::hiddenByFullScreen), 0);
    EXPECT_EQ(look(Case::permissionNeeded), 1);
    EXPECT_EQ(registry.relaunchHint(u"look_at_screen"), std::nullopt);
    EXPECT_EQ(look(Case::needsRelaunch), 1);
    EXPECT_EQ(registry.relaunchHint(u"look_at_screen"),
              u"Quit MorvaneGPT and open it again: Your desktop may only apply the permission to see the "
              "screen when an app launches."_s);
}

TEST_F(ToolRegistryTest, ASearchGoesToTheServiceThatTheCardNamedOrNowhere)
{
    using Service = WebAccessing::SearchService;
    answer = ApprovalAnswer::allowedForChat;
    const auto search = [this] { return dispatch(usual(u"search_web"_s), turnOf()); };
    search();
    search();
    EXPECT_EQ(asked.size(), 1);
    world->service = Service::personsOwn;
    search();
    EXPECT_EQ(asked.size(), 2) << "a yes for the chat named another service";

    onAsked = [this] { world->service = Service::personsOwn; };
    world->service = Service::builtIn;
    EXPECT_TRUE(search().isError);
    EXPECT_EQ(happened.size(), 3);
}

TEST_F(ToolRegistryTest, AYesAfterTheEndOfItsTurnOrOfTheRegistryRunsNothing)
{
    std::stop_source stop;
    onAsked = [&stop] { stop.request_stop(); };
    EXPECT_EQ(dispatch(usual(u"open_link"_s), turnOf(), stop.get_token()).content,
              u"Error: That didn't work."_s);

    auto gone =
        std::make_unique<ToolRegistry>(ToolRegistry::Services{settings, memory, *world, clock, world.get()});
    gone->setHooks(hooks());
    onAsked = [&gone] { gone.reset(); };
    EXPECT_EQ(TestWait::await(gone->dispatch(usual(u"open_link"_s), turnOf(), {})).content,
              u"Error: That didn't work."_s);

    registry.setHooks({.approvalHandler = [](const QString &, const AIToolCall &,
                                             const AITool &) -> QCoro::Task<ApprovalAnswer> {
        throw CancelledError(); // its window is gone
        co_return ApprovalAnswer::allowedOnce;
    }});
    EXPECT_EQ(dispatch(usual(u"open_link"_s), turnOf()).content,
              u"Error: This action needs the user's approval and none could be requested."_s);
    EXPECT_TRUE(happened.empty());
}

TEST_F(ToolRegistryTest, AStopDuringAFailedReadSendsNoSearch)
{
    answer = ApprovalAnswer::allowedForChat;
    dispatch(usual(u"search_web"_s), turnOf());
    std::stop_source stop;
    world->readError = failure(WebAccessError(WebAccessError::Plain::cancelled));
    const auto read = call(u"read_web_page"_s, uR"({"url":"https://typed.example/Page"})"_s);
    const auto turn = turnOf();
    world->onRead = [&stop] { stop.request_stop(); };
    EXPECT_EQ(dispatch(read, turn, stop.get_token()).content, u"Error: That didn't work."_s);
    EXPECT_EQ(happened, QStringList({u"search weather"_s, u"read https://typed.example/Page up to 6000"_s}));
}

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
