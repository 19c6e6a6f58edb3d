#include "attestation/evidence/PoolWork.h"

#include <QSemaphore>
#include <QThreadPool>

#include <atomic>

namespace morvane {

void PoolWork::forEach(std::size_t count, const std::function<void(std::size_t)> &work)
{
    std::atomic<std::size_t> next = 0;
    QSemaphore finishedHelpers;
    const auto takeTurns = [&] {
        for (std::size_t i = next++; i < count; i = next++)
            work(i);
    };
    const auto help = [&] {
        takeTurns();
        finishedHelpers.release();
    };

    QThreadPool *const pool = QThreadPool::globalInstance();
    int helpers = 0;
    for (std::size_t i = 1; i < count && pool->tryStart(help); ++i)
        ++helpers;
    takeTurns();
    finishedHelpers.acquire(helpers);
}

} // namespace morvane
