#pragma once

#include <QCoroTask>
#include <QStringList>

#include <chrono>
#include <memory>
#include <stop_token>

namespace morvane {

class Clock;

// Asks the system's resolver for a name's addresses without blocking the GUI thread. Each question runs on a
// thread of its own, which nobody waits for: a resolver that hangs delays neither a turn beyond the limit nor
// the end of the program. GUI thread.
class HostLookup {
public:
    static constexpr std::chrono::seconds limit{5};
    static constexpr int mostAtOnce = 8; // threads, those left behind by a hanging resolver included

    explicit HostLookup(Clock &clock);
    ~HostLookup();
    HostLookup(const HostLookup &) = delete;
    HostLookup &operator=(const HostLookup &) = delete;

    // Numeric addresses; empty for an unknown name and when the resolver takes too long. Throws
    // CancelledError.
    [[nodiscard]] QCoro::Task<QStringList> addresses(QString name, std::stop_token stop);

private:
    class Answers;

    Clock &m_clock;
    std::shared_ptr<Answers> m_answers;
};

} // namespace morvane
