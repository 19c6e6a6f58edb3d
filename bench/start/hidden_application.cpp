#include "../FirstHidden.h"
#include "app/Launch.h"

#include <QGuiApplication>
#include <QQuickStyle>

using namespace morvane;

// The application on the profile named by the first argument, in the tray: its window was opened and closed.
// With a second argument there never was one.
int main(int argc, char **argv)
{
    QQuickStyle::setStyle(QStringLiteral("Basic"));
    QGuiApplication application(argc, argv);
    const FirstHidden firstHidden;
    CommandLine commandLine;
    commandLine.profile = QString::fromLocal8Bit(argv[1]);
    commandLine.request.showsWindow = argc < 3;
    Launch launch(application, commandLine);
    launch.start();
    return QGuiApplication::exec();
}
