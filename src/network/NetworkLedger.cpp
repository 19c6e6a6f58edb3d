#include "network/NetworkLedger.h"

#include <utility>

namespace morvane {

namespace {

bool hasEnded(const NetworkLedger::Entry &entry)
{
    return !std::holds_alternative<EgressOutcome::InFlight>(entry.outcome.value);
}

} // namespace

NetworkLedger::NetworkLedger()
    : m_rows(capacity, hasEnded)
{}

void NetworkLedger::record(Entry entry)
{
    m_rows.append(std::move(entry));
}

void NetworkLedger::clear()
{
    m_rows.clear();
}

NetworkLedger::Snapshot NetworkLedger::snapshot() const
{
    return m_rows.snapshot();
}

} // namespace morvane
