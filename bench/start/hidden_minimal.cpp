#include "../FirstHidden.h"

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickStyle>

using namespace morvane;

// The yardstick of what is hidden: a bare window that was opened and closed.
int main(int argc, char **argv)
{
    QQuickStyle::setStyle(QStringLiteral("Basic"));
    QGuiApplication application(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    const FirstHidden firstHidden;
    QQmlApplicationEngine engine;
    engine.loadData(R"(
        import QtQuick.Controls
        ApplicationWindow {
            width: 1100; height: 760; visible: true
            TextArea { anchors.fill: parent; focus: true }
        })");
    return QGuiApplication::exec();
}
