#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickWindow>
#include <QString>

namespace morvane {

class ChatViewModel;

// Plays one turn in the real window with real key events: types a question, sends it, prints the reply as it
// streams, and saves a picture of the window.
class DemoPlayer : public QObject {
    Q_OBJECT
public:
    DemoPlayer(QQuickWindow &window, ChatViewModel &chat, QString picturePath, QObject *parent = nullptr);

    // Begins once the window can take keys.
    void play();

Q_SIGNALS:
    // The exit code of the program: 0 when a reply came and the picture was saved.
    void finished(int exitCode);

private:
    void ask();
    void type(const QString &text);
    void press(int key, const QString &text);
    void printNewText();
    void takePicture();

    QQuickWindow &m_window;
    ChatViewModel &m_chat;
    QString m_picturePath;
    qsizetype m_printed = 0;
};

} // namespace morvane
