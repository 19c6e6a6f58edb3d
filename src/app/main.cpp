#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "app/DisplayOpening.h"
#include "app/Launch.h"
#include "app/Renderer.h"
#include "app/RunningInstance.h"
#include "app/TerminationSignals.h"
#include "app/WindowIcon.h"
#include "platform/linux/CrashHandler.h"
#include "platform/linux/DesktopActivation.h"
#include "platform/linux/MachineBuses.h"
#include "platform/linux/PortalIdentity.h"
#include "platform/linux/ProcessPrivacy.h"
#include "platform/linux/WaylandSession.h"
#include "platform/linux/WindowActivation.h"
#include "services/CrashReportService.h"
#include "utils/text/Product.h"
#include <QFont>
#include <QGuiApplication>
#include <QQuickStyle>

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <span>
#include <string_view>
#include <tuple>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

void nameIt()
{
    QCoreApplication::setApplicationName(Product::name);
    QCoreApplication::setApplicationVersion(QStringLiteral(MORVANE_VERSION));
}

// Its words are wanted, and no window: a terminal without a display gets them as well.
bool isQuestion(int argc, char **argv)
{
    constexpr std::array<std::string_view, 5> questions{"-h", "--help", "--help-all", "-v", "--version"};
    return std::ranges::any_of(std::span(argv, std::size_t(argc)), [&](const char *argument) {
        return std::ranges::find(questions, argument) != questions.end();
    });
}

// Qt's own input method for Wayland reaches for a seat without looking whether there is one, and the process
// ends there; the one for dead keys needs none.
void avoidMissingSeat()
{
    if (qEnvironmentVariableIsEmpty("QT_IM_MODULE") && WaylandSession::lacksSeat())
        qputenv("QT_IM_MODULE", "compose");
}

void describe(QGuiApplication &application)
{
    QGuiApplication::setDesktopFileName(Product::desktopId);
    QGuiApplication::setWindowIcon(windowIcon());
    // Without a colour font in the list an emoji is drawn in one colour where DejaVu is installed.
    QFont font = QGuiApplication::font();
    font.setFamilies({font.family(), u"Noto Sans"_s, u"Noto Color Emoji"_s});
    application.setFont(font);
    PortalIdentity::tell(MachineBuses::session());
}

int run(QGuiApplication &application, CommandLine commandLine, const QString &activationToken)
{
    commandLine.request.activationToken = activationToken;
    RunningInstance instance(commandLine.folders().runtime);
    if (!instance.isFirst() && (instance.askFirst(commandLine.request) || !instance.follow())) {
        if (commandLine.request.showsWindow)
            std::printf("%s is already open; its window comes to the front.\n", Product::name.data());
        return 0;
    }
    CrashHandler::install(CrashReportService::folderIn(commandLine.folders()), CrashReportService::kept);
    Launch launch(application, commandLine);
    // The name is the person's own profile's.
    const DesktopActivation activation(commandLine.profile ? std::nullopt : MachineBuses::session());
    QObject::connect(&activation, &DesktopActivation::asked, &launch, &Launch::take);
    QObject::connect(&instance, &RunningInstance::asked, &launch, &Launch::take);
    const TerminationSignals signalSource;
    QObject::connect(&signalSource, &TerminationSignals::received, &application, &AppDelegate::end);
    launch.start();
    const int code = QGuiApplication::exec();
    instance.leave(); // before the name goes, at which the desktop may start the next one
    return code;
}

} // namespace

int main(int argc, char **argv)
{
    ProcessPrivacy::keep();
    nameIt();
    if (isQuestion(argc, argv)) {
        const QCoreApplication answering(argc, argv);
        std::ignore = CommandLine::parse(QCoreApplication::arguments()); // ends the program
    }
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    QQuickStyle::setStyle(u"Basic"_s);
    const QString activationToken = WindowActivation::offered(); // which Qt takes away
    std::optional<DisplayOpening> opening(std::in_place);
    avoidMissingSeat();
    QGuiApplication application(argc, argv);
    opening.reset();
    Renderer::choose();
    describe(application);
    try {
        return run(application, CommandLine::parse(QCoreApplication::arguments()), activationToken);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s could not start: %s\n", Product::name.data(), error.what());
        return 1;
    }
}
