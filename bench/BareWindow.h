#pragma once

#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>

namespace morvane {

// The yardsticks of a window: what Qt Quick itself takes for the same words in its plainest items.
class BareWindow {
public:
    // A list of so many plain texts that wrap, at its end.
    static BareWindow listOf(int count, const QString &text)
    {
        BareWindow window(R"(
            ListView {
                id: list
                property string words
                property int rows
                objectName: "subject"
                anchors.fill: parent
                model: rows
                delegate: Text { width: list.width; text: list.words; wrapMode: Text.Wrap; textFormat: Text.PlainText }
            })");
        window.subject()->setProperty("words", text);
        window.subject()->setProperty("rows", count);
        QMetaObject::invokeMethod(window.subject(), "positionViewAtEnd");
        return window;
    }

    // One plain text that wraps and shows its end.
    static BareWindow text()
    {
        return BareWindow(R"(
            Text {
                objectName: "subject"
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.bottom: parent.bottom
                wrapMode: Text.Wrap
                textFormat: Text.PlainText
            })");
    }

    [[nodiscard]] QQuickItem *subject() const
    {
        return m_engine->rootObjects().constFirst()->findChild<QQuickItem *>(QStringLiteral("subject"));
    }
    void append(const QString &piece) const
    {
        subject()->setProperty("text", subject()->property("text").toString() + piece);
    }

private:
    explicit BareWindow(const char *item)
        : m_engine(std::make_unique<QQmlApplicationEngine>())
    {
        m_engine->loadData(QByteArray("import QtQuick\nWindow { width: 1100; height: 760; visible: true; ") +
                           item + " }");
    }

    std::unique_ptr<QQmlApplicationEngine> m_engine;
};

} // namespace morvane
