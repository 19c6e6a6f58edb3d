#pragma once

#include "attestation/evidence/Check.h"
#include "attestation/evidence/EvidencePins.h"
#include "attestation/evidence/NvidiaGPUEvidence.h"
#include "attestation/evidence/TDXQuote.h"
#include "attestation/evidence/TDXQuoteVerifier.h"
#include "attestation/evidence/VeniceAttestationDocument.h"
#include "attestation/evidence/VeniceMeasurementAllowlist.h"
#include "utils/text/UserPresentableError.h"

#include <functional>
#include <span>

namespace morvane {

// Judges a server's claim. What passes becomes a Verified, the one value that the rest of the program trusts.
// Takes as long as its certificate work, so it runs off the GUI thread; any thread will do.
namespace VeniceAttestationVerifier {

struct Verified {
    QString model;
    QByteArray modelPublicKey; // 65 bytes; messages are encrypted to it
    QByteArray signingAddress; // 20 bytes, derived from the key and never the stated ones
    QByteArray nonce;
    VeniceMeasurementAllowlist::Stack stack;
    QString configurationLabel;
    QString hostLabel;
    QByteArray mrtd;
    QByteArray rtmr3;
    std::optional<QByteArray> composeHash;
    QByteArray quote;
    qsizetype verifiedGPUCount = 0; // 0 also when the stack needs no GPU evidence
    std::optional<QString> teeProvider;
    bool serverClaimedVerified = false;
    QDateTime verifiedAt;
    VeniceMeasurementAllowlist::Source acceptedList;

    // One line for logs.
    [[nodiscard]] QString summary() const;
};

class Failure final : public UserPresentableError {
public:
    struct Quote {
        TDXQuoteVerifier::Failure failure;
        bool operator==(const Quote &) const = default;
    };
    struct QuoteMalformed {
        TDXQuote::ParseError error;
        bool operator==(const QuoteMalformed &) const = default;
    };
    struct MeasurementsNotAllowed {
        QString model;
        bool operator==(const MeasurementsNotAllowed &) const = default;
    };
    struct Configuration {
        VeniceMeasurementAllowlist::Refusal refusal;
        bool operator==(const Configuration &) const = default;
    };
    struct WrongModel {
        QString asked;
        QString answered;
        bool operator==(const WrongModel &) const = default;
    };
    struct GPUEvidence {
        NvidiaGPUEvidence::Failure failure;
        bool operator==(const GPUEvidence &) const = default;
    };
    enum class Plain {
        noQuote,
        noSigningKey,
        nonceMismatch,
        reportDataDoesNotBindNonce,
        reportDataDoesNotBindKey,
        statedAddressDoesNotMatchKey,
        gpuEvidenceMissing,
    };
    using Case = std::variant<Quote, QuoteMalformed, MeasurementsNotAllowed, Configuration, WrongModel,
                              GPUEvidence, Plain>;

    Failure(Case reason)
        : m_case(std::move(reason))
    {}

    [[nodiscard]] const Case &reason() const { return m_case; }
    [[nodiscard]] QString caseText() const;

    [[nodiscard]] QString userMessage() const override;
    [[nodiscard]] bool isRetryable() const override { return false; }

    // How each user message ends, and those of a private cloud that can't answer.
    [[nodiscard]] static QString localReplyEnding();

    bool operator==(const Failure &other) const { return m_case == other.m_case; }

private:
    Case m_case;
};

// What is asked of a document, and by which lights it is judged.
struct Question {
    VeniceAttestationDocument document;
    QString model;
    QByteArray nonce; // 32 bytes that we made for this request
    VeniceMeasurementAllowlist allowlist;
    EvidencePins pins;
    QDateTime date; // the certificates must be valid then
    NvidiaGPUEvidence::Spread spread = NvidiaGPUEvidence::inTurn;
};

struct Inquiry {
    const Question &question;
    QByteArray address;
    TDXQuote quote;
    std::optional<VeniceMeasurementAllowlist::Match> match;
    qsizetype gpuCount = 0;
};

// In the order that decides which failure a bad document reports: local tests first, so that a stale answer
// costs nothing, and the list only once the measurements are known to be signed. Each throws Failure.
[[nodiscard]] std::span<const Check<Inquiry>> checks();

// What a run of checks is about, in the order in which they come.
enum class Part {
    key, // the local tests: the model, the nonce, and the key that both are bound to
    hardware,
    baseSystem, // the image, against the list
    boot,       // what was configured and measured on top of it, against the list
    graphicsChips,
};

// Told when a part begins, on the thread that verifies.
using Progress = std::function<void(Part)>;

// Runs all checks. Throws the first Failure.
[[nodiscard]] Verified verify(const Question &question, const Progress &progress = {});

// The account address of a signing key: 20 bytes. Nothing unless the key is 65 bytes that begin with 0x04.
[[nodiscard]] std::optional<QByteArray> addressOf(const QByteArray &signingKey);

} // namespace VeniceAttestationVerifier

} // namespace morvane
