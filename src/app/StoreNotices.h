#pragma once

#include "async/TaskHandle.h"

#include <QObject>
#include <QPointer>

namespace morvane {

class ShellViewModel;
class Work;
struct Storage;

// What the person is told about the file with their chats: that an older one was left where it was, and that
// this one is damaged. A damaged file stays as it is until they have decided; what is said meanwhile is kept
// in its log.
//
// GUI thread. What it is given outlives it.
class StoreNotices : public QObject {
    Q_OBJECT
public:
    StoreNotices(Storage &storage, ShellViewModel &shell, Work &work);

    // Once the window is there: reading through the file takes as long as reading it.
    void start();

Q_SIGNALS:
    void quitChosen();

private:
    void tellOfOldFile();
    static QCoro::Task<> examine(QPointer<StoreNotices> self, std::stop_token stop);
    void tellOfDamage();
    void decide(int button); // 0 sets the file aside, any other goes on with it
    void setAside();

    Storage &m_storage;
    ShellViewModel &m_shell;
    Work &m_work;
    TaskHandle m_examination;
};

} // namespace morvane
