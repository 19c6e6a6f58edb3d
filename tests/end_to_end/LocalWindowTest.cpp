// A model on this machine as a person comes to it: from a window that has none to an answer in it.

#include "end_to_end/AppFixture.h"

#include "ai/local/LocalModelService.h"
#include "app/Assistant.h"
#include "persistence/SettingsStore.h"
#include "support/RuntimeHost.h"

#include <QFile>

#include <csignal>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Kind = LocalModelService::Phase::Kind;

// The runtime's home, where it keeps its models and its key.
struct LocalHome {
    LocalHome() { qputenv("HOME", folder.path().toUtf8()); }
    ~LocalHome() { qputenv("HOME", former); }

    const QByteArray former = qgetenv("HOME");
    QTemporaryDir folder;
    RuntimeHost host;
};

class LocalWindowTest : protected LocalHome, public AppFixture {
protected:
    LocalWindowTest()
        : AppFixture(host.developmentFile())
    {}
    ~LocalWindowTest() override
    {
        stop();
        EXPECT_TRUE(WindowDriver::eventually([this] {
            return RuntimeHost::processesBelow(profile.path()).empty();
        })) << "a process is left";
    }

    [[nodiscard]] LocalModelService &local() const { return *state->assistant().localModel; }
    [[nodiscard]] bool becomes(Kind kind)
    {
        return WindowDriver::eventually([&] { return local().phase().kind == kind; });
    }
    // By the buttons of Settings > AI: the press, and the yes to what it would fetch.
    void press()
    {
        ASSERT_TRUE(becomes(Kind::notSetUp));
        for (const QString &button : {u"setUpLocal"_s, u"fetchLocal"_s}) {
            QQuickItem *control = settingsControl(u"ai"_s, button);
            ASSERT_NE(control, nullptr) << button.toStdString();
            for (const auto &request : host.requests())
                EXPECT_NE(request.method, "GET") << "nothing is fetched before the yes";
            WindowDriver::click(control);
        }
    }
    void setUp()
    {
        press();
        ASSERT_TRUE(becomes(Kind::ready)) << local().phase().text.toStdString();
        window()->requestActivate();
        ASSERT_TRUE(WindowDriver::eventually([this] { return window()->isActive(); }));
        WindowDriver::settle();
    }
    void expectAnswer(const QString &words)
    {
        say(words);
        ASSERT_TRUE(turnEnds());
        EXPECT_TRUE(lastText().contains(u"“%1”"_s.arg(words))) << lastText().toStdString();
    }
    [[nodiscard]] QByteArray setupLog() const
    {
        QFile file(local().setupLogPath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
};

TEST_F(LocalWindowTest, FromNothingToAnAnswerAndAgainAfterAStart)
{
    host.play(u"talkative"_s);
    setUp();
    expectAnswer(u"Where did the heron go?"_s);
    EXPECT_TRUE(setupLog().contains("local AI ready with model"));
    EXPECT_FALSE(setupLog().contains("heron")) << "the runtime said it, and nobody wrote it down";
    EXPECT_TRUE(server.requests().empty());

    stop();
    start();
    ASSERT_TRUE(becomes(Kind::ready)) << "it starts with the window";
    expectAnswer(u"And the mill?"_s);
    const auto runs = host.journal(u"serve"_s);
    EXPECT_EQ(runs.size(), 2U);
    for (const QJsonObject &run : runs)
        EXPECT_TRUE(run["isWhole"_L1].toBool());
    EXPECT_EQ(host.journal(u"pull"_s).size(), 1U);
}

TEST_F(LocalWindowTest, ARuntimeThatDiedIsStartedAgainByTheBannersButton)
{
    host.play(u"runner"_s); // a process of its own beside it
    setUp();
    expectAnswer(u"One"_s);
    ::kill(host.journal(u"serve"_s).at(0)["process"_L1].toInt(), SIGKILL);
    ASSERT_TRUE(becomes(Kind::failed));
    say(u"Two"_s);
    ASSERT_TRUE(turnEnds());
    ASSERT_TRUE(WindowDriver::eventually([this] { return item(u"restartLocalModel"_s) != nullptr; }));
    WindowDriver::click(item(u"restartLocalModel"_s));
    ASSERT_TRUE(becomes(Kind::ready));
    expectAnswer(u"Three"_s);
}

} // namespace

} // namespace morvane
