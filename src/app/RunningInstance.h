#pragma once

#include "app/RequestMessage.h"

#include <QLockFile>
#include <QObject>
#include <QString>

#include <memory>

class QSocketNotifier;

namespace morvane {

// One program for one profile. A second start hands on what it was asked for, and ends.
//
// It works through a lock file and a named pipe in the runtime folder and needs no bus: a profile of its own
// is an instance of its own, and a session without a message bus behaves the same. What goes through the pipe
// is nowhere on disk.
class RunningInstance : public QObject {
    Q_OBJECT
public:
    explicit RunningInstance(const QString &runtimeFolder, QObject *parent = nullptr);
    ~RunningInstance() override;

    // True for the first start of this profile. A lock that a killed program left behind counts as none.
    [[nodiscard]] bool isFirst() const { return m_lock.isLocked(); }

    // Hands the request to the first start. False when that is ending, or doesn't listen for two seconds.
    [[nodiscard]] bool askFirst(const AppRequest &request) const;

    // Waits some seconds for a first start that is ending, and becomes the first one. False when it stayed.
    [[nodiscard]] bool follow();

    // The program is ending: it takes no request any more, so that the next start waits instead of handing
    // one to nobody.
    void leave();

Q_SIGNALS:
    void asked(const morvane::AppRequest &request);

private:
    void listen();
    void take();

    QString m_pipePath;
    QLockFile m_lock;
    int m_pipe = -1;
    RequestMessage m_message;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace morvane
