#include "async/Work.h"

#include <system_error>

namespace morvane {

void Work::Mailbox::post(std::function<void()> delivery)
{
    const std::scoped_lock lock(m_mutex);
    if (!m_receiver)
        return;
    m_deliveries.push_back(std::move(delivery));
    QMetaObject::invokeMethod(
        m_receiver.get(), [this] { deliver(); }, Qt::QueuedConnection);
}

// Once for each post(), on the GUI thread. Without the lock while it delivers, as that may close the box.
void Work::Mailbox::deliver()
{
    std::function<void()> next;
    {
        const std::scoped_lock lock(m_mutex);
        next = std::move(m_deliveries.front());
        m_deliveries.pop_front();
    }
    next();
}

void Work::Mailbox::close()
{
    const std::scoped_lock lock(m_mutex);
    m_receiver.reset();
    m_deliveries.clear();
}

Work::Work(Clock &clock)
    : m_clock(clock)
{}

void Work::end()
{
    {
        const std::scoped_lock lock(m_mutex);
        m_ending.request_stop();
    }
    m_jobWaits.notify_all();
    for (std::thread &thread : m_threads)
        thread.join();
    m_threads.clear();
    m_idle = 0;
}

void Work::resume()
{
    if (m_ending.stop_requested())
        m_ending = std::stop_source();
}

void Work::enqueue(Job job)
{
    const std::scoped_lock lock(m_mutex);
    m_jobs.push_back(std::move(job));
    if (m_idle < std::ssize(m_jobs) && std::ssize(m_threads) < mostThreads)
        addThread();
    m_jobWaits.notify_one();
}

// Under the lock.
void Work::addThread()
{
    try {
        m_threads.emplace_back([this] { takeTurns(m_ending.get_token()); });
        ++m_idle;
    } catch (const std::system_error &) { // no thread to be had: those there are must do
        if (m_threads.empty()) {
            m_jobs.pop_back();
            throw;
        }
    }
}

// A thread's life. At the end the jobs that still wait are run as well: each sees the stop and does nothing.
void Work::takeTurns(const std::stop_token &ending)
{
    std::unique_lock lock(m_mutex);
    while (true) {
        m_jobWaits.wait(lock, [&] { return !m_jobs.empty() || ending.stop_requested(); });
        if (m_jobs.empty())
            return;
        const Job job = std::move(m_jobs.front());
        m_jobs.pop_front();
        --m_idle;
        lock.unlock();
        job(ending);
        lock.lock();
        ++m_idle;
    }
}

bool Work::detach(std::function<void()> job, Outside outside)
{
    const std::shared_ptr<std::atomic<int>> out(m_questions,
                                                &m_questions->at(static_cast<std::size_t>(outside)));
    if (out->fetch_add(1) >= mostQuestions) {
        out->fetch_sub(1);
        return false;
    }
    try {
        std::thread([job = std::move(job), out] {
            job();
            out->fetch_sub(1);
        }).detach();
        return true;
    } catch (const std::system_error &) { // no thread to be had
        out->fetch_sub(1);
        return false;
    }
}

} // namespace morvane
