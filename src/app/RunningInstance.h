#pragma once

#include <QFileSystemWatcher>
#include <QLockFile>
#include <QObject>
#include <QString>

#include <memory>

namespace morvane {

// One program for one profile. A second start asks the first to come forward and ends.
//
// It works through two files in the runtime folder, a lock and a request, and needs no bus: a profile of its
// own is an instance of its own, and a session without a message bus behaves the same.
class RunningInstance : public QObject {
    Q_OBJECT
public:
    explicit RunningInstance(const QString &runtimeFolder, QObject *parent = nullptr);
    ~RunningInstance() override;

    // True for the first start of this profile. A lock that a killed program left behind counts as none.
    [[nodiscard]] bool isFirst() const { return m_lock.isLocked(); }

    // Asks the first start to show its window.
    void askFirstToShow() const;

Q_SIGNALS:
    void showRequested();

private:
    void watch();

    QString m_requestPath;
    QLockFile m_lock;
    QFileSystemWatcher m_watcher;
};

} // namespace morvane
