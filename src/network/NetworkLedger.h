#pragma once

#include "network/EgressTypes.h"

#include <QDateTime>
#include <QString>
#include <QUuid>

#include <cstdint>
#include <mutex>
#include <vector>

namespace morvane {

// What the application sent and received since it started, newest row last.
//
// Any thread may call any member. Rows live in memory only, and a row never changes once it is here.
class NetworkLedger {
public:
    struct Entry {
        QUuid id = QUuid::createUuid();
        QDateTime startedAt; // UTC
        QString host;        // "(no host)" for an address without one
        EgressFeature feature{};
        SensitiveDataSet carrying;
        std::int64_t bytesSent = 0;     // header and body, as they crossed the wire
        std::int64_t bytesReceived = 0; // header and body, as they crossed the wire
        EgressOutcome outcome;
    };

    struct Snapshot {
        std::vector<Entry> entries;
        std::uint64_t revision = 0; // rises by one on every change
    };

    // Beyond this many rows, the oldest finished ones go.
    static constexpr std::size_t capacity = 500;

    void record(Entry entry);
    void clear();

    // Rows and revision of one moment, so a view that compares revisions never shows older rows under a
    // newer number.
    [[nodiscard]] Snapshot snapshot() const;

private:
    mutable std::mutex m_mutex;
    std::vector<Entry> m_entries; // guarded by m_mutex
    std::uint64_t m_revision = 0; // guarded by m_mutex
};

} // namespace morvane
