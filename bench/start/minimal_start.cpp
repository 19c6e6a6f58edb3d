#include "../FirstFrame.h"

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickStyle>

using namespace morvane;

// The yardstick of a start: a bare window from the modules that the application's window uses.
int main(int argc, char **argv)
{
    QQuickStyle::setStyle(QStringLiteral("Basic"));
    QGuiApplication application(argc, argv);
    FirstFrame firstFrame;
    QQmlApplicationEngine engine;
    engine.loadData(R"(
        import QtQuick
        import QtQuick.Layouts
        import QtQuick.Templates as T
        import QtQuick.Controls
        ApplicationWindow {
            width: 1100; height: 760; visible: true
            ColumnLayout {
                anchors.fill: parent
                ListView {
                    Layout.fillWidth: true; Layout.fillHeight: true
                    model: 30
                    delegate: Text { required property int index; text: "Row " + index }
                }
                TextArea { Layout.fillWidth: true; placeholderText: "Write a message" }
                Button { text: "Send" }
            }
        })");
    return QGuiApplication::exec();
}
