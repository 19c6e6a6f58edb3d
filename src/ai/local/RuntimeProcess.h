#pragma once

#include <QObject>
#include <QProcess>
#include <QString>

#include <map>

namespace morvane {

class SetupLog;

// The runtime that this program started, as a child under a guard of its own: it has a process group of its
// own, no descriptors of ours, an environment of a few names, and ends with all it started when this program
// ends, however that comes about. Its output goes to the setup log until it may be given a chat. GUI thread.
class RuntimeProcess : public QObject {
    Q_OBJECT
public:
    struct Program {
        QString guard;
        QString runtime;
        QStringList arguments;
        std::map<QString, QString> environment = {}; // beside the names that every runtime gets
    };

    // Starts it at once. `log` outlives the object; without one, what it says is never read.
    RuntimeProcess(const Program &program, SetupLog *log, QObject *parent = nullptr);
    ~RuntimeProcess() override; // as stop()

    [[nodiscard]] bool isRunning() const { return m_process.state() != QProcess::NotRunning; }

    // It was told to end.
    [[nodiscard]] bool isStopping() const { return m_isStopping; }

    // Of the guard, whose descendants are the runtime and what that starts; 0 when nothing runs.
    [[nodiscard]] qint64 processId() const { return m_process.processId(); }

    // From now on its output is dropped: it may hold words of the person.
    void stopLogging() { m_isLogging = false; }

    // Tells it to end, which takes a moment, or the five seconds that it is given to put its things away.
    void requestStop();

    // The same, and waits for it.
    void stop();

Q_SIGNALS:
    void ended(); // by itself, and not because it was told to

private:
    void takeOutput();

    SetupLog *const m_log;
    QProcess m_process;
    bool m_isLogging = true;
    bool m_isStopping = false;
};

} // namespace morvane
