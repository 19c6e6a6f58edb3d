#include "network/HostLookup.h"

#include "async/AsyncStream.h"
#include "async/Clock.h"
#include "network/PrivateNetworkAddress.h"

#include <QObject>

#include <map>
#include <mutex>
#include <system_error>
#include <thread>

namespace morvane {

using Producer = AsyncStream<QStringList>::Producer;

// Where the threads leave what they found. The only part that they share with the GUI thread, and it outlives
// the lookup for as long as one of them hangs.
class HostLookup::Answers {
public:
    // From a thread: hands the addresses to the event loop, if anybody is left to hear of them.
    static void deliver(const std::shared_ptr<Answers> &answers, int question, const QStringList &addresses)
    {
        const std::scoped_lock lock(answers->m_mutex);
        --answers->m_running;
        if (answers->m_receiver)
            QMetaObject::invokeMethod(
                answers->m_receiver.get(),
                [self = answers.get(), question, addresses] { self->tell(question, addresses); },
                Qt::QueuedConnection);
    }

    // False when too many threads are out already.
    [[nodiscard]] bool begin()
    {
        const std::scoped_lock lock(m_mutex);
        if (m_running >= mostAtOnce)
            return false;
        ++m_running;
        return true;
    }

    [[nodiscard]] int expect(Producer waiting)
    {
        m_waiting.emplace(++m_latest, std::move(waiting));
        return m_latest;
    }

    // Ends the wait for an answer; a later one is dropped.
    void tell(int question, const QStringList &addresses)
    {
        const auto waiting = m_waiting.find(question);
        if (waiting == m_waiting.end())
            return;
        waiting->second.yield(addresses);
        m_waiting.erase(waiting);
    }

    void close()
    {
        m_waiting.clear();
        const std::scoped_lock lock(m_mutex);
        m_receiver.reset();
    }

private:
    std::map<int, Producer> m_waiting; // GUI thread
    int m_latest = 0;                  // GUI thread

    std::mutex m_mutex;
    std::unique_ptr<QObject> m_receiver = std::make_unique<QObject>(); // guarded by m_mutex
    int m_running = 0;                                                 // guarded by m_mutex
};

HostLookup::HostLookup(Clock &clock)
    : m_clock(clock)
    , m_answers(std::make_shared<Answers>())
{}

HostLookup::~HostLookup()
{
    m_answers->close();
}

QCoro::Task<QStringList> HostLookup::addresses(QString name, std::stop_token stop)
{
    auto [answer, producer] = AsyncStream<QStringList>::make();
    const std::shared_ptr<Answers> answers = m_answers;
    if (!answers->begin())
        co_return QStringList();
    const int question = answers->expect(std::move(producer));
    try {
        std::thread([answers, question, name] {
            Answers::deliver(answers, question, PrivateNetworkAddress::resolve(name));
        }).detach();
    } catch (const std::system_error &) { // no thread to be had
        Answers::deliver(answers, question, {});
    }
    const auto alarm = m_clock.after(limit, [answers, question] { answers->tell(question, {}); });
    const std::optional<QStringList> found = co_await answer.next(stop);
    co_return found.value_or(QStringList());
}

} // namespace morvane
