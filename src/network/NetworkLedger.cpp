#include "network/NetworkLedger.h"

#include <utility>

namespace morvane {

namespace {

void trim(std::vector<NetworkLedger::Entry> &entries)
{
    if (entries.size() <= NetworkLedger::capacity)
        return;
    std::size_t surplus = entries.size() - NetworkLedger::capacity;
    std::erase_if(entries, [&surplus](const NetworkLedger::Entry &entry) {
        const bool isRunning = std::holds_alternative<EgressOutcome::InFlight>(entry.outcome.value);
        if (surplus == 0 || isRunning)
            return false;
        --surplus;
        return true;
    });
}

} // namespace

void NetworkLedger::record(Entry entry)
{
    const std::scoped_lock lock(m_mutex);
    m_entries.push_back(std::move(entry));
    trim(m_entries);
    ++m_revision;
}

void NetworkLedger::clear()
{
    const std::scoped_lock lock(m_mutex);
    m_entries.clear();
    ++m_revision;
}

NetworkLedger::Snapshot NetworkLedger::snapshot() const
{
    const std::scoped_lock lock(m_mutex);
    return {m_entries, m_revision};
}

} // namespace morvane
