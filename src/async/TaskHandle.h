#pragma once

#include <QCoroTask>

#include <functional>
#include <memory>
#include <stop_token>

namespace morvane {

// Owns a running task. Stopping is cooperative: the task sees its token at its next suspension and ends by
// itself, also after the handle is gone. Destroying or replacing a handle stops its task.
//
// An exception that leaves a task ends it silently, so a task decides about its own failures.
class TaskHandle {
public:
    TaskHandle() = default;
    ~TaskHandle() { requestStop(); }
    TaskHandle(TaskHandle &&) noexcept = default;
    TaskHandle &operator=(TaskHandle &&other) noexcept;
    TaskHandle(const TaskHandle &) = delete;
    TaskHandle &operator=(const TaskHandle &) = delete;

    // Runs `task` at once, up to its first suspension. Pass a function that takes everything by value: a
    // capturing lambda must not itself be a coroutine.
    static TaskHandle start(const std::function<QCoro::Task<>(std::stop_token)> &task);

    void requestStop();
    [[nodiscard]] bool isRunning() const { return m_running && *m_running; }

private:
    std::stop_source m_stop{std::nostopstate};
    std::shared_ptr<bool> m_running;
};

} // namespace morvane
