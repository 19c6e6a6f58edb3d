#include "end_to_end/AppFixture.h"

#include "persistence/SettingsStore.h"
#include "platform/linux/DesktopScreen.h"
#include "support/Await.h"

#include <QTest>

#include <array>
#include <cstdio>

namespace morvane {

using namespace Qt::StringLiterals;

AppFixture::AppFixture(const QStringList &serverOptions)
    : server(serverOptions)
{
    start();
}

AppFixture::AppFixture(const QByteArray &file)
    : devRuntime(file)
{
    start();
}

AppFixture::AppFixture(Clock &clock, const DevRelay::Origin &relay)
    : clock(clock)
    , devRelay(relay)
{
    start();
}

AppFixture::~AppFixture()
{
    stop();
}

void AppFixture::start()
{
    CommandLine commandLine;
    commandLine.profile = profile.path();
    commandLine.devRelay = devRelay;
    if (devRuntime.isEmpty()) {
        commandLine.practiceServer = server.baseUrl();
    } else {
        commandLine.devRuntime =
            LocalRuntimeValues::ofThisBuild(commandLine.folders()).withDevelopmentFile(devRuntime).value();
        commandLine.devRuntime->guard = QStringLiteral(MORVANE_RUNTIME_GUARD); // not beside a test
    }
    work.emplace(clock);
    screen = screenOfTheDesktop(clock, *work);
    state = std::make_unique<AppState>(commandLine, Host::test, clock, Secrets{keychain, keychain}, *work,
                                       nullptr, voice, DesktopPorts{.screen = screen.get()});
    state->storage().settings->setOnboardingComplete(true);
    if (devRuntime.isEmpty()) {
        state->storage().settings->setBaseURLString(server.baseUrl());
        state->storage().settings->setModel(u"practice-fast"_s);
    }
    mainWindow = std::make_unique<MainWindowController>(state->presentation());
    QObject::connect(state.get(), &AppState::mainWindowRequested, mainWindow.get(),
                     &MainWindowController::show);
    ASSERT_NE(mainWindow->window(), nullptr);
    state->start();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window()));
    WindowDriver::settle();
}

void AppFixture::stop()
{
    if (!state)
        return;
    state->willTerminate();
    TestWait::settle(); // a stopped turn ends before its stores go
    mainWindow.reset();
    state.reset();
    TestWait::settle();
}

void AppFixture::useModel(const QString &model)
{
    state->storage().settings->setModel(model);
}

void AppFixture::say(const QString &words)
{
    WindowDriver::type(window(), words);
    WindowDriver::press(window(), Qt::Key_Return);
}

bool AppFixture::turnEnds()
{
    const bool ended =
        WindowDriver::eventually([this] { return !chat().isResponding() && chat().turnsInFlight() == 0; });
    WindowDriver::settle();
    return ended;
}

QVariant AppFixture::lastRow(int role) const
{
    const auto *messages = chat().messages();
    return messages->index(messages->rowCount() - 1).data(role);
}

QString AppFixture::lastText() const
{
    return lastRow(MessageListModel::TextRole).toString();
}

QQuickItem *AppFixture::item(const QString &objectName) const
{
    return WindowDriver::item(window(), objectName);
}

QQuickItem *AppFixture::settingsControl(const QString &page, const QString &objectName) const
{
    QQuickWindow *settings = WindowDriver::settingsWindow(window());
    if (!settings)
        return nullptr;
    settings->setProperty("page", page);
    QQuickItem *control = nullptr;
    const bool isThere = WindowDriver::eventually([&] {
        control = WindowDriver::item(settings, objectName);
        return control && control->isEnabled();
    });
    return isThere ? control : nullptr;
}

void AppFixture::come(const char *stage)
{
    std::printf("stage %s\n", stage);
    std::fflush(stdout);
    std::array<char, 16> line{};
    ASSERT_NE(std::fgets(line.data(), line.size(), stdin), nullptr) << "nobody watches";
}

} // namespace morvane
