#include "../FirstFrame.h"
#include "app/Launch.h"

#include <QGuiApplication>
#include <QQuickStyle>

using namespace morvane;

// The application's own start, on the profile named by the first argument.
int main(int argc, char **argv)
{
    QQuickStyle::setStyle(QStringLiteral("Basic"));
    QGuiApplication application(argc, argv);
    FirstFrame firstFrame;
    CommandLine commandLine;
    commandLine.profile = QString::fromLocal8Bit(argv[1]);
    Launch launch(application, commandLine);
    launch.start();
    return QGuiApplication::exec();
}
