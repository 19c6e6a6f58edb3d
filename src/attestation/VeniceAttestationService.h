#pragma once

#include "attestation/VeniceEnclaveSource.h"
#include "attestation/VeniceMeasurementLists.h"
#include "utils/bytes/SecretBytes.h"

#include <functional>
#include <map>

namespace morvane {

// Asks the private cloud's server for a proof with a fresh nonce, judges it by the lists of accepted servers,
// and keeps a good one for half an hour. The one place where proofs, lists and the network meet. GUI thread;
// the judging runs on `Work`.
//
// Its tasks end with CancelledError when it goes.
class VeniceAttestationService final : public VeniceEnclaveSource {
public:
    using Verified = VeniceAttestationVerifier::Verified;

    class Failure final : public std::exception {
    public:
        struct Transport {
            QString text;
            bool operator==(const Transport &) const = default;
        };
        struct Http {
            int status;
            bool operator==(const Http &) const = default;
        };
        enum class Plain { badEndpoint };
        using Case = std::variant<Transport, Http, Plain>;

        Failure(Case reason)
            : m_case(std::move(reason))
        {}

        [[nodiscard]] const Case &reason() const { return m_case; }
        [[nodiscard]] const char *what() const noexcept override { return "no proof came"; }

    private:
        Case m_case;
    };

    // What is referred to outlives the service.
    struct Parts {
        QString baseURLString; // ends in "/v1"
        HttpSessionProviding &sessions;
        Clock &clock;
        Work &work;
        VeniceMeasurementLists *lists = nullptr; // without them `fixedAllowlist` decides
        EvidencePins pins;
        VeniceMeasurementAllowlist fixedAllowlist{};

        // How long a proof that is at hand waits for a list that is on its way.
        std::chrono::milliseconds listWait{2000};
        std::function<QByteArray()> makeNonce = randomNonce; // 32 bytes; may throw
    };

    // Bytes of a server's answer. A genuine one with eight graphics chips takes a few hundred thousand.
    static constexpr qsizetype largestProof = qsizetype{2} * 1024 * 1024;

    explicit VeniceAttestationService(Parts parts);

    // Throws also Failure, VeniceAttestationDocument::DecodeError, and std::runtime_error when the system has
    // no randomness to give.
    [[nodiscard]] QCoro::Task<Verified> verifiedEnclave(QString model, ProofRun run,
                                                        std::stop_token stop) override;
    void forget(const QString &model) override;
    [[nodiscard]] QString acceptedListText() const override;

    [[nodiscard]] VeniceMeasurementAllowlist currentAllowlist(const QDateTime &now) const;

private:
    using Question = VeniceAttestationVerifier::Question;
    using Refresh = VeniceMeasurementLists::Refresh;

    [[nodiscard]] static QByteArray randomNonce();
    [[nodiscard]] const Verified *kept(const QString &model, const QDateTime &now) const;
    [[nodiscard]] QCoro::Task<> waitBriefly(Refresh refresh, std::stop_token stop);
    static QCoro::Task<> dropAllAfter(VeniceAttestationService *self, Lifeline::Check check, Refresh refresh);
    void dropAll();
    [[nodiscard]] HttpRequest requestFor(const Question &question) const;
    [[nodiscard]] QCoro::Task<Question> asked(QString model, QDateTime now, std::stop_token stop);
    [[nodiscard]] QCoro::Task<Verified> judged(Question question, ProofRun run, std::stop_token stop);
    [[nodiscard]] QCoro::Task<Verified> judgedByNewestList(Question question, ProofRun run,
                                                           std::stop_token stop);

    const Parts m_parts;
    std::map<QString, Verified> m_cache; // by model
    quint64 m_listChanges = 0;           // that the service heard of
    Lifeline m_lifeline;
};

} // namespace morvane
