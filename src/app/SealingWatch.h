#pragma once

#include "async/Clock.h"
#include "async/TaskHandle.h"

#include <QObject>
#include <QPointer>

#include <chrono>
#include <memory>

namespace morvane {

class ShellViewModel;
class Work;
struct Storage;

// While texts can't be sealed and are stored readable, the window says so. Meanwhile sealing is tried again
// now and then, and once it works, what was left readable is sealed.
//
// GUI thread. What it is given outlives it.
class SealingWatch : public QObject {
    Q_OBJECT
public:
    SealingWatch(Storage &storage, ShellViewModel &shell, Clock &clock, Work &work);
    ~SealingWatch() override;

    // Doesn't wait for its next turn, as when the person comes back to the window.
    void tryAgain();

private:
    void follow();
    void wait();
    [[nodiscard]] bool isInTrouble() const;
    static QCoro::Task<> look(QPointer<SealingWatch> self, std::stop_token stop);

    static constexpr std::chrono::seconds firstPause{5};
    static constexpr std::chrono::seconds longestPause{300};

    Storage &m_storage;
    ShellViewModel &m_shell;
    Clock &m_clock;
    Work &m_work;
    std::chrono::seconds m_pause = firstPause;
    std::unique_ptr<Alarm> m_alarm; // while in trouble and nobody looks
    TaskHandle m_look;
};

} // namespace morvane
