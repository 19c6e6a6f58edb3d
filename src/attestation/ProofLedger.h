#pragma once

#include "network/EgressTypes.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QUuid>

#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

namespace morvane {

// One row for each model request: where the answer ran, what private data it carried and, for the private
// cloud, the hardware proof behind it. Holds no prompt, reply or tool argument, lives in memory for the run
// and keeps the newest 200 rows. Any thread.
class ProofLedger {
public:
    struct Place {
        enum class Kind {
            thisMac,
            network,
            verifiedEnclave,
            enclaveRefused,
            morvaneCloud,
            yourOwnService,
            ollamaCloud,
        };

        Kind kind = Kind::thisMac;
        QString model;
        QString host; // network and yourOwnService only

        // "this-mac", "your-network", …: how a place is stored with an answer.
        [[nodiscard]] QString code() const;
        // "This Mac", "Your network", …: how a place is shown.
        [[nodiscard]] QString plainName() const;

        bool operator==(const Place &) const = default;
    };

    struct Attestation {
        QString stackLabel;
        std::optional<QString> teeProvider;
        QByteArray quote;
        QByteArray nonce;
        QByteArray mrtd;
        QByteArray rtmr3;
        std::optional<QByteArray> composeHash;
        QByteArray signingAddress;
        QByteArray modelPublicKey;
        int verifiedGPUCount = 0;
        bool requiresGPUEvidence = false;
        bool serverClaimedVerified = false;
        QDateTime verifiedAt;

        bool operator==(const Attestation &) const = default;
    };

    struct Entry {
        QUuid id;
        QDateTime startedAt;
        Place place;
        QString purpose;
        SensitiveDataSet carrying;
        std::optional<Attestation> attestation;
        std::optional<QString> note;
        std::optional<QString> acceptedServersList;
    };

    struct Snapshot {
        std::vector<Entry> entries; // oldest first
        std::uint64_t revision = 0;
    };

    void append(Entry entry);
    void clear();

    // Rows and revision of one moment.
    [[nodiscard]] Snapshot snapshot() const;

private:
    mutable std::mutex m_mutex;
    std::vector<Entry> m_entries; // guarded by m_mutex
    std::uint64_t m_revision = 0; // guarded by m_mutex
};

// The plain name behind a stored place code; nothing for a code of another version.
[[nodiscard]] std::optional<QString> placeNameOfCode(const QString &code);

} // namespace morvane
