#pragma once

#include <QCoroTask>
#include <QStringList>

#include <chrono>
#include <functional>
#include <stop_token>

namespace morvane {

class Work;

// Asks the system's resolver for a name's addresses without blocking the GUI thread. A resolver that hangs
// delays neither its caller beyond the limit nor the end of the program. GUI thread.
class HostLookup {
public:
    // Numeric addresses of a name; blocks, and owns all that it touches.
    using Resolve = std::function<QStringList(const QString &name)>;

    static constexpr std::chrono::seconds limit{5};

    explicit HostLookup(Work &work); // the system's resolver
    HostLookup(Work &work, Resolve resolve);

    // Numeric addresses; empty for an unknown name and when the resolver takes too long. Throws
    // CancelledError.
    [[nodiscard]] QCoro::Task<QStringList> addresses(QString name, std::stop_token stop) const;

private:
    Work *m_work;
    Resolve m_resolve;
};

} // namespace morvane
