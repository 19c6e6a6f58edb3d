// From nothing to a model that answers: the welcome, the model on this computer and one of a computer nearby.

#include "WindowFixture.h"

#include "persistence/SettingsStore.h"
#include "support/ScriptedServer.h"
#include "view_models/ShellViewModel.h"
#include "view_models/settings/LocalModelViewModel.h"

#include <QFile>
#include <QGuiApplication>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// What a server of models lists, in its own dialect and in the common one.
ScriptedServer::Script models(const QByteArray &native, const QByteArray &common = "[]")
{
    return [native, common](ScriptedServer::Connection &connection) {
        while (const auto request = connection.readRequest())
            connection.send(
                ScriptedServer::response("200 OK", request->target().startsWith("/api") ? native : common));
    };
}

class FirstStepsTest : public WindowFixture {
protected:
    void SetUp() override {}

    void begin(const LocalRuntimeValues &runtime)
    {
        m_runtime = runtime;
        start();
        m_app->storage().settings->setModel({});
        m_app->storage().settings->setBaseURLString(runtime.serverOrigin.toString() + u"/v1"_s);
        load();
    }
    void open(const LocalRuntimeValues &runtime)
    {
        begin(runtime);
        m_page = settingsWindow();
    }
    QQuickItem *control(const QString &name) const { return WindowDriver::item(m_page, name); }
    bool waitsFor(const QString &words) const
    {
        return eventually([&] { return shows(m_page, words); });
    }
    void press(const QString &name)
    {
        ASSERT_TRUE(eventually([&] { return control(name) && control(name)->isEnabled(); }))
            << name.toStdString();
        click(control(name));
        settle();
    }
    static QQuickWindow *windowTitled(const QString &title)
    {
        for (QWindow *window : QGuiApplication::topLevelWindows())
            if (window->isVisible() && window->title() == title)
                return qobject_cast<QQuickWindow *>(window);
        return nullptr;
    }

    SettingsStore &settings() { return *m_app->storage().settings; }
    QQuickWindow *m_page = nullptr;
};

TEST_F(FirstStepsTest, ThePressSaysWhatItFetchesAndAsksOnce)
{
    ScriptedServer release(ScriptedServer::answering(ScriptedServer::response("404 Not Found", "")));
    LocalRuntimeValues runtime = m_runtime;
    runtime.releaseOrigin = release.url(QString());
    runtime.archive = {u"ollama.tar.zst"_s, QString(64, u'0'), 1'400'000'000};
    open(runtime);
    press(u"setUpLocal"_s);
    ASSERT_TRUE(waitsFor(u"Ollama 0.34.0, 1.4 GB, from 127.0.0.1"_s));
    EXPECT_TRUE(shows(m_page, u"are free on the disk"_s));
    EXPECT_TRUE(isAt(m_page, u"Not Now"_s)) << "where Return does no harm";
    press(u"notNow"_s);
    EXPECT_EQ(release.requests().size(), 0U);
    EXPECT_FALSE(shows(m_page, u"1.4 GB, from"_s));

    press(u"setUpLocal"_s);
    press(u"fetchLocal"_s);
    ASSERT_TRUE(waitsFor(u"Something is in the way"_s));
    EXPECT_EQ(release.requests().size(), 1U);
    EXPECT_EQ(control(u"setUpLocal"_s)->property("text"), u"Retry"_s);
    press(u"showLocalLog"_s);
    EXPECT_TRUE(waitsFor(u"FAILED: "_s));
}

TEST_F(FirstStepsTest, WhereNothingCanBeFetchedARuntimeIsInstalledByHandAndWatchedFor)
{
    LocalRuntimeValues runtime = m_runtime;
    runtime.foundRuntimes = {m_profile.filePath(u"ollama"_s)};
    open(runtime);
    press(u"setUpLocal"_s);
    ASSERT_TRUE(waitsFor(u"Install Ollama yourself"_s));
    press(u"copyCommand"_s);
    EXPECT_TRUE(clipboard().startsWith(u"curl "_s));
    m_clock.advance(LocalModelViewModel::betweenLooks);
    settle();
    EXPECT_FALSE(control(u"fetchLocal"_s));
    QFile installed(runtime.foundRuntimes.first());
    ASSERT_TRUE(installed.open(QFile::WriteOnly) &&
                installed.setPermissions(QFile::ExeOwner | QFile::ReadOwner));
    ASSERT_TRUE(eventually([&] {
        m_clock.advance(LocalModelViewModel::betweenLooks);
        return shows(m_page, u"The Ollama that you installed runs it."_s);
    }));
    EXPECT_FALSE(control(u"copyCommand"_s));
}

TEST_F(FirstStepsTest, TheModelsOfTheLocalServerAreChosenAndDeletedAndAChangedOneIsToldOf)
{
    std::atomic changed = false;
    ScriptedServer server([&](ScriptedServer::Connection &connection) {
        while (connection.readRequest())
            connection.send(ScriptedServer::response(
                "200 OK", R"({"models":[{"name":"a:1b","size":2000000000,"digest":")" +
                              QByteArray(changed ? "new" : "old") + R"("},{"name":"b:7b","digest":"d"}]})"));
    });
    LocalRuntimeValues runtime = m_runtime;
    runtime.serverOrigin = server.url(QString());
    open(runtime);
    ASSERT_TRUE(waitsFor(u"2.0 GB"_s));
    QQuickItem *use = named(u"Use a:1b"_s);
    ASSERT_TRUE(use || (use = control(u"useModel"_s)));
    click(use);
    ASSERT_TRUE(waitsFor(u"a:1b, 2.0 GB on the disk"_s));
    EXPECT_EQ(settings().model(), u"a:1b"_s);
    EXPECT_EQ(settings().baseURLString(), server.url(u"/v1"_s).toString());

    changed = true;
    m_page->close();
    m_page = settingsWindow();
    ASSERT_TRUE(waitsFor(u"its published fingerprint changed"_s));
    press(u"lookAtFingerprints"_s);
    EXPECT_TRUE(shows(m_page, u"first seen: old\nnow: new"_s));
    press(u"acceptFingerprints"_s);
    EXPECT_FALSE(control(u"integrityWarning"_s));

    press(u"deleteModel"_s);
    ASSERT_TRUE(waitsFor(u"This frees 2.0 GB"_s));
    const auto deletions = [&] {
        const auto requests = server.requests();
        return std::count_if(requests.begin(), requests.end(),
                             [](const auto &request) { return request.method() == "DELETE"; });
    };
    EXPECT_EQ(deletions(), 0);
    ASSERT_TRUE(eventually([&] { return isAt(m_page, u"Cancel"_s); }));
    WindowDriver::press(m_page, Qt::Key_Tab);
    WindowDriver::press(m_page, Qt::Key_Return);
    EXPECT_TRUE(eventually([&] { return deletions() == 1; }));
}

TEST_F(FirstStepsTest, AComputerNearbyIsAskedForItsModelsAndOneIsTaken)
{
    ScriptedServer server(models("{}", R"({"data":[{"id":"small"},{"id":"large"}]})"));
    open(m_runtime);
    const auto ask = [&](const QString &place) {
        control(u"nearbyPlace"_s)->forceActiveFocus();
        WindowDriver::press(m_page, Qt::Key_A, Qt::ControlModifier);
        WindowDriver::type(m_page, place);
        WindowDriver::press(m_page, Qt::Key_Return);
    };
    ask(u"127.0.0.1:1"_s);
    ASSERT_TRUE(waitsFor(u"it's refusing connections. Ollama usually needs"_s));
    ASSERT_TRUE(waitsFor(u"On that computer, open a terminal and run this once"_s));
    press(u"copyCommand"_s);
    EXPECT_TRUE(clipboard().contains(u"OLLAMA_HOST=0.0.0.0"_s));

    settings().setHostedChatEnabled(true);
    ask(server.url().authority());
    ASSERT_TRUE(waitsFor(u"Choose the model"_s));
    EXPECT_FALSE(control(u"setupInstruction"_s));
    click(control(u"nearbyModel"_s)); // the first by name
    EXPECT_EQ(settings().model(), u"large"_s);
    EXPECT_EQ(settings().baseURLString(), server.url(u"/v1"_s).toString());
    EXPECT_FALSE(settings().hostedChatEnabled());
    EXPECT_TRUE(waitsFor(u"Replies now come from large on 127.0.0.1."_s));
}

TEST_F(FirstStepsTest, TheWelcomeGoesForthAndBackAndLeavesAChatThatSaysHowToGetAModel)
{
    begin(m_runtime);
    const QString title = u"Welcome to MorvaneGPT"_s;
    Q_EMIT m_app->presentation().shell->welcomeRequested();
    ASSERT_TRUE(eventually([&] { return windowTitled(title) && windowTitled(title)->isActive(); }));
    m_page = windowTitled(title);
    settle();
    const auto isAtStep = [&](const QString &heading) { return waitsFor(heading); };
    EXPECT_TRUE(isAtStep(u"Where should replies come from?"_s));
    EXPECT_TRUE(isAt(m_page, u"Skip This Step"_s));
    EXPECT_TRUE(control(u"setUpLocal"_s));
    EXPECT_FALSE(control(u"chooseCloud"_s)) << "this build has none";
    press(u"chooseNearby.head"_s);
    EXPECT_TRUE(control(u"nearbyPlace"_s) && !control(u"setUpLocal"_s));

    WindowDriver::press(m_page, Qt::Key_Right, Qt::AltModifier);
    EXPECT_TRUE(isAtStep(u"What stays private"_s));
    press(u"openLedger"_s);
    QQuickWindow *settingsPage = settingsWindow();
    EXPECT_EQ(settingsPage->property("page"), u"network"_s);
    settingsPage->close();
    m_page->requestActivate();
    ASSERT_TRUE(eventually([&] { return m_page->isActive(); }));
    WindowDriver::press(m_page, Qt::Key_Left, Qt::AltModifier);
    EXPECT_TRUE(isAtStep(u"Where should replies come from?"_s));
    WindowDriver::press(m_page, Qt::Key_Return);
    WindowDriver::press(m_page, Qt::Key_Return);
    EXPECT_TRUE(isAtStep(u"A few keys, and the ghost"_s));
    EXPECT_FALSE(settings().onboardingComplete());
    WindowDriver::press(m_page, Qt::Key_Return);
    ASSERT_TRUE(eventually([&] { return !windowTitled(title); }));
    EXPECT_TRUE(eventually([&] { return settings().onboardingComplete(); }));
    EXPECT_TRUE(shows(u"No model is set up yet"_s));
}

} // namespace

} // namespace morvane
