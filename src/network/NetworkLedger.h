#pragma once

#include "network/EgressTypes.h"
#include "network/LedgerRing.h"

#include <QDateTime>
#include <QString>
#include <QUuid>

#include <cstdint>

namespace morvane {

// What the application sent and received since it started, newest row last.
//
// Any thread may call any member.
class NetworkLedger {
public:
    struct Entry {
        QUuid id = QUuid::createUuid();
        QDateTime startedAt; // UTC
        QString host;        // "(no host)" for an address without one
        EgressFeature feature{};
        SensitiveDataSet carrying;
        // Header and body with their framing. Counted inside the encryption: what TLS, names and handshakes
        // add on the wire is not in here.
        std::int64_t bytesSent = 0;
        std::int64_t bytesReceived = 0;
        EgressOutcome outcome;
    };

    using Snapshot = LedgerRing<Entry>::Snapshot;

    // Beyond this many rows, the oldest finished ones go.
    static constexpr std::size_t capacity = 500;

    NetworkLedger();

    void record(Entry entry);
    void clear();
    [[nodiscard]] Snapshot snapshot() const;

private:
    LedgerRing<Entry> m_rows;
};

} // namespace morvane
