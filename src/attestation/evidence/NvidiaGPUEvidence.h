#pragma once

#include "attestation/evidence/Check.h"
#include "attestation/evidence/EvidencePins.h"
#include "attestation/evidence/KnownCertificates.h"
#include "attestation/evidence/PEMCertificates.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <cstddef>
#include <exception>
#include <functional>
#include <optional>
#include <span>
#include <variant>
#include <vector>

namespace morvane {

// A server's signed evidence for each of its NVIDIA GPUs. A good one shows that every report was signed just
// now, for our nonce, by a key certified under NVIDIA's root. What the reports measure is not judged.
struct NvidiaGPUEvidence {
    struct GPU {
        QString architecture;
        QByteArray nonce;
        QByteArray report; // 4 bytes, the nonce, at least one byte, the signature's 96 bytes
        PEMCertificates::Chain certificateChain; // empty when the payload's text held none
    };

    class Failure final : public std::exception {
    public:
        struct NonceMismatch {
            qsizetype gpuIndex; // -1 for the payload's own nonce
            bool operator==(const NonceMismatch &) const = default;
        };
        struct NonceNotInReport {
            qsizetype gpuIndex;
            bool operator==(const NonceNotInReport &) const = default;
        };
        struct SignatureInvalid {
            qsizetype gpuIndex;
            bool operator==(const SignatureInvalid &) const = default;
        };
        struct CertificateChain {
            qsizetype gpuIndex;
            QString reason;
            bool operator==(const CertificateChain &) const = default;
        };
        struct MalformedPayload {
            bool operator==(const MalformedPayload &) const = default;
        };
        struct NoEvidence {
            bool operator==(const NoEvidence &) const = default;
        };
        using Case = std::variant<NonceMismatch, NonceNotInReport, SignatureInvalid, CertificateChain,
                                  MalformedPayload, NoEvidence>;

        Failure(Case reason)
            : m_case(std::move(reason))
        {}

        [[nodiscard]] const Case &reason() const { return m_case; }
        [[nodiscard]] QString caseText() const;
        bool operator==(const Failure &other) const { return m_case == other.m_case; }

    private:
        Case m_case;
    };

    // One device, and what it is held against.
    struct Inquiry {
        const GPU &gpu;
        qsizetype index;
        const QByteArray &expectedNonce;
        const EvidencePins &pins;
        const QDateTime &date;
        KnownCertificates &known;
        std::optional<PEMCertificates::Leaf> leaf; // once its chain has been verified
    };

    QString architecture;
    QByteArray nonce;
    std::vector<GPU> gpus; // never empty after a good parse

    // Throws Failure.
    [[nodiscard]] static NvidiaGPUEvidence parse(const QString &payload);

    // How the devices are spread over threads: calls `piece` once for each index below `count`, on as many
    // threads at once as the caller wants to give, and returns when all are done. A piece doesn't throw.
    using Piece = std::function<void(std::size_t)>;
    using Spread = std::function<void(std::size_t count, const Piece &piece)>;

    // One after the other on the calling thread.
    static void inTurn(std::size_t count, const Piece &piece);

    // Throws the first Failure in the order of the devices.
    void verify(const QByteArray &expectedNonce, const EvidencePins &pins, const QDateTime &date,
                const Spread &spread = inTurn) const;

    // The steps of verify(): first the payload's own nonce, then for each device these, in order.
    void requireNonce(const QByteArray &expectedNonce) const;
    [[nodiscard]] static std::span<const Check<Inquiry>> deviceChecks();
};

} // namespace morvane
