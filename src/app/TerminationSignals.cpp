#include "app/TerminationSignals.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace morvane {

namespace {

constexpr std::array signalNumbers{SIGTERM, SIGINT, SIGHUP};

// A handler may do little more than write: the event loop reads the other end.
int writeEnd = -1;

void handle(int)
{
    const char byte = 0;
    [[maybe_unused]] const auto written = ::write(writeEnd, &byte, 1);
}

} // namespace

TerminationSignals::TerminationSignals(QObject *parent)
    : QObject(parent)
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    m_readEnd = ends[0];
    writeEnd = ends[1];
    m_notifier = std::make_unique<QSocketNotifier>(m_readEnd, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        if (::read(m_readEnd, &byte, 1) == 1)
            Q_EMIT received();
    });
    struct sigaction action {};
    action.sa_handler = handle;
    action.sa_flags = SA_RESTART;
    for (const int number : signalNumbers)
        sigaction(number, &action, nullptr);
}

TerminationSignals::~TerminationSignals()
{
    if (m_readEnd < 0)
        return;
    for (const int number : signalNumbers)
        std::signal(number, SIG_DFL);
    ::close(m_readEnd);
    ::close(writeEnd);
}

} // namespace morvane
