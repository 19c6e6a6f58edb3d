#include "app/AppDelegate.h"
#include "app/AppState.h"
#include "app/CommandLine.h"
#include "app/DemoPlayer.h"
#include "app/MainWindowController.h"
#include "app/RunningInstance.h"
#include "app/TerminationSignals.h"
#include "persistence/SettingsStore.h"
#include "platform/linux/DesktopAppearance.h"
#include "utils/Clock.h"
#include "utils/PrivateFile.h"
#include "utils/Product.h"
#include "view_models/ChatViewModel.h"
#include "view_models/ShellViewModel.h"

#include <QFont>
#include <QGuiApplication>
#include <QIcon>
#include <QQuickStyle>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

void describe(QGuiApplication &application)
{
    QGuiApplication::setApplicationName(Product::name);
    QGuiApplication::setApplicationVersion(QStringLiteral(MORVANE_VERSION));
    QGuiApplication::setDesktopFileName(Product::desktopId);
    QGuiApplication::setWindowIcon(QIcon(u":/qt/qml/Morvane/icons/morvane.svg"_s));
    // Without a colour font in the list an emoji is drawn in one colour where DejaVu is installed.
    QFont font = QGuiApplication::font();
    font.setFamilies({font.family(), u"Noto Sans"_s, u"Noto Color Emoji"_s});
    application.setFont(font);
}

// A practice profile starts out pointing at its server.
void usePracticeServer(SettingsStore &settings, const QString &address)
{
    settings.setBaseURLString(address);
    settings.setModel(u"practice"_s);
    settings.setProviderName(u"Practice server"_s);
    settings.setHostedChatEnabled(false);
}

int run(QGuiApplication &application, const CommandLine &commandLine)
{
    RunningInstance instance(commandLine.folders().runtime);
    if (!instance.isFirst()) {
        instance.askFirstToShow();
        std::printf("%s is already open; its window comes to the front.\n", Product::name.data());
        return 0;
    }
    SystemClock clock;
    AppState state(commandLine, AppState::Host::application, clock);
    if (commandLine.practiceServer)
        usePracticeServer(state.settings(), *commandLine.practiceServer);

    MainWindowController mainWindow(state);
    if (!mainWindow.window())
        return 1;
    DesktopAppearance appearance;
    QObject::connect(&appearance, &DesktopAppearance::darkChanged, &state.shell(),
                     &ShellViewModel::setSystemDark);

    AppDelegate delegate(application, state);
    QObject::connect(&instance, &RunningInstance::showRequested, &state, &AppState::reopen);
    QObject::connect(&mainWindow.engine(), &QQmlEngine::quit, &delegate, &AppDelegate::requestQuit);
    const TerminationSignals signalSource;
    QObject::connect(&signalSource, &TerminationSignals::received, &application, &QCoreApplication::quit);
    delegate.didFinishLaunching();

    std::unique_ptr<DemoPlayer> demo;
    if (commandLine.demoPicture) {
        demo = std::make_unique<DemoPlayer>(*mainWindow.window(), state.chat(), *commandLine.demoPicture);
        QObject::connect(demo.get(), &DemoPlayer::finished, &application, &QCoreApplication::exit,
                         Qt::QueuedConnection);
        QMetaObject::invokeMethod(demo.get(), &DemoPlayer::play, Qt::QueuedConnection);
    }
    return QGuiApplication::exec();
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    QQuickStyle::setStyle(u"Basic"_s);
    QGuiApplication application(argc, argv);
    describe(application);
    try {
        return run(application, CommandLine::parse(QCoreApplication::arguments()));
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s could not start: %s\n", Product::name.data(), error.what());
        return 1;
    }
}
