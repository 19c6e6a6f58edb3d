#pragma once

#include "attestation/evidence/Check.h"
#include "attestation/evidence/EvidencePins.h"
#include "attestation/evidence/ProofExportFile.h"
#include "attestation/evidence/TDXQuote.h"
#include "attestation/evidence/TDXQuoteVerifier.h"
#include "attestation/evidence/VeniceMeasurementAllowlist.h"

#include <span>

namespace morvane {

// Judges a row of an exported proof ledger by the quote it holds. A quote speaks for what is signed in it;
// the rest of a row is the program's own record, of which no more can be seen than whether it agrees with
// itself. Any thread.
namespace ExportedProof {

class Failure final : public std::exception {
public:
    // The row's own words don't fit each other.
    struct Contradiction {
        QString field;
        bool operator==(const Contradiction &) const = default;
    };
    // The row says otherwise than the quote.
    struct NotTheQuotes {
        QString field;
        bool operator==(const NotTheQuotes &) const = default;
    };
    // A byte of the quote that no signature covers isn't as hardware writes it.
    struct StrayByte {
        qsizetype offset;
        bool operator==(const StrayByte &) const = default;
    };
    // The row says otherwise than the list of accepted servers.
    struct NotTheLists {
        QString field;
        bool operator==(const NotTheLists &) const = default;
    };
    using Case = std::variant<Contradiction, NotTheQuotes, StrayByte, NotTheLists>;

    Failure(Case reason)
        : m_case(std::move(reason))
    {}

    [[nodiscard]] const Case &reason() const { return m_case; }
    [[nodiscard]] QString caseText() const;

private:
    Case m_case;
};

struct Inquiry {
    const ProofExportFile::Turn &turn;
    const EvidencePins &pins;
    TDXQuote quote; // once it has been read
};

// Of any row. Each throws Failure.
[[nodiscard]] std::span<const Check<Inquiry>> rowChecks();

// Of a row with a proof, behind those. Each throws Failure or what the quote's own checks throw. The
// certificates must be valid at the time of the row.
[[nodiscard]] std::span<const Check<Inquiry>> proofChecks();

// Whether `list` names the quote's image for the row's model. Throws Failure when it does so under another
// label than the row's, or with another demand for graphics evidence.
[[nodiscard]] bool isListed(const Inquiry &inquiry, const VeniceMeasurementAllowlist &list);

// The list that a text names, of those that `VeniceMeasurementAllowlist::Source` may write on any desktop;
// its date is the day alone.
[[nodiscard]] std::optional<VeniceMeasurementAllowlist::Source> listNamedIn(const QString &text);

// Whether the proof was judged by that version of a signed list. Throws Failure when the text names the
// version with another day.
[[nodiscard]] bool isJudgedBy(const ProofExportFile::Proof &proof, std::int64_t version,
                              const QDateTime &notAfter);

} // namespace ExportedProof

} // namespace morvane
