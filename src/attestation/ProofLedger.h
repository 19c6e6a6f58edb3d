#pragma once

#include "attestation/evidence/VeniceAttestationVerifier.h"
#include "network/EgressTypes.h"
#include "network/LedgerRing.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QUuid>

#include <optional>
#include <utility>

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

        [[nodiscard]] static Attestation of(const VeniceAttestationVerifier::Verified &verified);

        // What the proof covers, on one line: "Hardware and base system · 2 graphics chips".
        [[nodiscard]] QString summary() const;

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

        // Whether the attestation was at hand before the request began, rather than made for it. False
        // without one.
        [[nodiscard]] bool wasVerifiedEarlier() const;

        // What came of it, in a few words: "Hardware verified", "Stayed on your network", …
        [[nodiscard]] QString resultText() const;
    };

    using Snapshot = LedgerRing<Entry>::Snapshot;

    // The row's id, by which whoever asked finds it again: the entry's own, or a new one when it has none.
    QUuid append(Entry entry);
    void clear() { m_rows.clear(); }
    // Nothing for a row that has gone or never was.
    [[nodiscard]] std::optional<Entry> find(const QUuid &id) const { return m_rows.find(id); }
    [[nodiscard]] Snapshot snapshot() const { return m_rows.snapshot(); }

    // The rows as a file for others to check (ProofExport); `guidePage` is empty where the maker has
    // published no page about it.
    [[nodiscard]] QByteArray exportData(const QDateTime &exported, const QString &guidePage) const;

    // A name for that file, after the date and minute in `moment`'s own time zone; pass local time.
    [[nodiscard]] static QString exportFileName(const QDateTime &moment);

private:
    LedgerRing<Entry> m_rows{200};
};

// The plain name behind a stored place code; nothing for a code of another version.
[[nodiscard]] std::optional<QString> placeNameOfCode(const QString &code);

} // namespace morvane
