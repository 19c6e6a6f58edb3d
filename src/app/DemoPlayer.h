#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickWindow>
#include <QString>

namespace morvane {

class ChatViewModel;
class ProofWatch;

// Plays one turn in the real window with real key events: types a question, sends it, prints the steps of a
// hardware proof and the reply as they come, and saves a picture of the window.
class DemoPlayer : public QObject {
    Q_OBJECT
public:
    DemoPlayer(QQuickWindow &window, ChatViewModel &chat, const ProofWatch &watch, QString picturePath,
               QObject *parent = nullptr);

    // Begins once the window can take keys.
    void play();

Q_SIGNALS:
    // The exit code of the program: 0 when a reply came and the picture was saved.
    void finished(int exitCode);

private:
    void ask();
    void type(const QString &text);
    void press(int key, const QString &text);
    void printNewSteps();
    void printNewText();
    void takePicture();

    QQuickWindow &m_window;
    ChatViewModel &m_chat;
    const ProofWatch &m_watch;
    QString m_picturePath;
    qsizetype m_printed = 0;
    qsizetype m_printedSteps = 0; // of the proof m_proof
    quint64 m_proof = 0;
};

} // namespace morvane
