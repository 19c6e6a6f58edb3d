#include "async/TaskHandle.h"

#include <utility>

namespace morvane {

namespace {

QCoro::Task<> watch(QCoro::Task<> task, std::shared_ptr<bool> running)
{
    try {
        co_await std::move(task);
    } catch (...) {
        // Nobody can hear it; see the class comment.
    }
    *running = false;
}

} // namespace

TaskHandle &TaskHandle::operator=(TaskHandle &&other) noexcept
{
    // Stopping may run code that reaches this handle again, so the new task stands in place first.
    TaskHandle former;
    former.m_stop = std::exchange(m_stop, std::move(other.m_stop));
    former.m_running = std::exchange(m_running, std::move(other.m_running));
    other.m_stop = std::stop_source(std::nostopstate);
    return *this;
}

TaskHandle TaskHandle::start(const std::function<QCoro::Task<>(std::stop_token)> &task)
{
    TaskHandle handle;
    handle.m_stop = std::stop_source();
    handle.m_running = std::make_shared<bool>(true);
    watch(task(handle.m_stop.get_token()), handle.m_running);
    return handle;
}

void TaskHandle::requestStop()
{
    m_stop.request_stop();
}

} // namespace morvane
