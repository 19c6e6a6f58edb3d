#include "app/SealingWatch.h"

#include "app/Storage.h"
#include "async/CancelledError.h"
#include "async/Work.h"
#include "security/LocalDataVault.h"
#include "view_models/ShellViewModel.h"

#include <algorithm>

namespace morvane {

SealingWatch::SealingWatch(Storage &storage, ShellViewModel &shell, Clock &clock, Work &work)
    : m_storage(storage)
    , m_shell(shell)
    , m_clock(clock)
    , m_work(work)
{
    m_storage.vault->setTroubleObserver(
        [this] { QMetaObject::invokeMethod(this, &SealingWatch::follow, Qt::QueuedConnection); });
    if (isInTrouble()) // from the start
        follow();
}

SealingWatch::~SealingWatch()
{
    m_storage.vault->setTroubleObserver(nullptr);
}

bool SealingWatch::isInTrouble() const
{
    return m_storage.vault->trouble() != SealingTrouble::None;
}

void SealingWatch::follow()
{
    m_shell.setUnsealedNotice(sentenceFor(m_storage.vault->trouble()));
    if (isInTrouble()) {
        if (!m_alarm)
            wait();
        return;
    }
    m_alarm.reset();
    m_pause = firstPause;
    m_storage.sealWhatIsReadable();
}

void SealingWatch::wait()
{
    m_alarm = m_clock.after(m_pause, [this] { tryAgain(); });
    m_pause = std::min(2 * m_pause, longestPause);
}

void SealingWatch::tryAgain()
{
    m_alarm.reset();
    if (isInTrouble())
        m_look = TaskHandle::start([this](std::stop_token stop) { return look(this, std::move(stop)); });
}

// The keychain may wait for another process.
QCoro::Task<> SealingWatch::look(QPointer<SealingWatch> self, std::stop_token stop)
{
    const auto sealing = [vault = self->m_storage.vault] { (void)vault->seal(QString()); };
    try {
        co_await self->m_work.run(sealing, stop);
    } catch (const CancelledError &) {
        co_return;
    }
    if (self && self->isInTrouble())
        self->wait();
}

} // namespace morvane
