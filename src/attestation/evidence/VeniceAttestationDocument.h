#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <exception>
#include <optional>

namespace morvane {

// A server's whole claim about itself, decoded and not yet judged.
struct VeniceAttestationDocument {
    class DecodeError final : public std::exception {
    public:
        enum class Case { notJSON, noQuote, malformedSigningKey, malformedSigningAddress };

        DecodeError(Case reason)
            : m_case(reason)
        {}

        [[nodiscard]] Case reason() const { return m_case; }
        [[nodiscard]] QString caseText() const;
        bool operator==(const DecodeError &other) const { return m_case == other.m_case; }

    private:
        Case m_case;
    };

    QString model;
    bool serverVerified = false; // the server's own opinion; carries no weight
    std::optional<QByteArray> echoedNonce;
    std::optional<QByteArray> intelQuote;
    std::optional<QByteArray> signingPublicKey; // 65 bytes: 0x04, X, Y on secp256k1
    std::optional<QByteArray> signingAddress;   // 20 bytes, as stated
    std::optional<QString> nvidiaPayload;
    std::optional<QString> teeProvider;
    std::optional<QString> teeHardware;
    bool gpuEvidenceOmitted = false;
    std::optional<QString> configurationText; // its UTF-8 bytes are what the hardware measured
    std::optional<QByteArray> instanceID;     // 20 bytes

    // Throws DecodeError. A value of another type than it should have reads as absent.
    [[nodiscard]] static VeniceAttestationDocument decode(const QJsonObject &object);

    // The same for the bytes of a response. Throws DecodeError::notJSON unless they hold a JSON object.
    [[nodiscard]] static VeniceAttestationDocument decode(QByteArrayView json);
};

} // namespace morvane
