#pragma once

#include <QByteArray>
#include <QLockFile>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

class QSocketNotifier;

namespace morvane {

// One program for one profile. A second start asks the first to come forward, hands on the files that it was
// given, and ends.
//
// It works through a lock file and a named pipe in the runtime folder and needs no bus: a profile of its own
// is an instance of its own, and a session without a message bus behaves the same. What goes through the pipe
// is nowhere on disk: each message is the absolute path of a file, in the encoding of the file system, and a
// zero byte; an empty one only asks for the window.
class RunningInstance : public QObject {
    Q_OBJECT
public:
    explicit RunningInstance(const QString &runtimeFolder, QObject *parent = nullptr);
    ~RunningInstance() override;

    // True for the first start of this profile. A lock that a killed program left behind counts as none.
    [[nodiscard]] bool isFirst() const { return m_lock.isLocked(); }

    // Asks the first start to show its window and to attach the files, of which there may be none. Gives up
    // when the first doesn't listen for two seconds.
    void askFirst(const QStringList &files) const;

Q_SIGNALS:
    void asked(const QStringList &files);

private:
    void listen();
    void take();

    QString m_pipePath;
    QLockFile m_lock;
    int m_pipe = -1;
    QByteArray m_message; // what has come of one that isn't whole
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace morvane
