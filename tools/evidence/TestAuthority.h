#pragma once

#include "attestation/evidence/EvidencePins.h"
#include "attestation/evidence/TDXQuote.h"
#include "attestation/evidence/VeniceAttestationVerifier.h"
#include "evidence/CertificateRecipe.h"
#include "evidence/EvidenceAuthority.h"

#include <QJsonObject>

#include <functional>

namespace morvane {

// Mints what the makers and a server would: quotes, GPU evidence, documents and lists, all good unless told
// otherwise.
//
// A test changes one thing of a Scenario, either an ingredient, from which the rest then follows and is
// signed again, or through a hook a finished piece, before whatever contains it is made.

struct QuoteRecipe {
    QuoteRecipe();

    std::uint16_t version = 4;
    std::uint16_t attestationKeyType = 2;
    std::uint32_t teeType = 129;
    TDXQuote::TDReport report; // every field filled with bytes of its own
    SigningKey attestationKey;
    ChainRecipe chain;
    QByteArray qeAuthenticationData = QByteArray::fromHex("000102030405");
    QByteArray qeSigner = QByteArray(32, '\x51');
    std::uint16_t qeProduct = 2;
    std::uint8_t qeAttributes = 0x15;
    std::uint16_t certificationDataType = 6;
    std::uint16_t pckDataType = 5;

    std::function<void(QByteArray &)> onQEReport = [](QByteArray &) {};
    std::function<void(QByteArray &)> onSignedBody = [](QByteArray &) {};   // before it is signed
    std::function<void(std::vector<QByteArray> &)> onChain = [](auto &) {}; // DER
    std::function<void(QByteArray &)> onPEM = [](QByteArray &) {};
    std::function<void(QByteArray &)> onCertificationData = [](QByteArray &) {
    }; // before its length is written
    std::function<void(QByteArray &)> onSignatureData = [](QByteArray &) {};
    std::function<void(QByteArray &)> onQuote = [](QByteArray &) {};

    [[nodiscard]] QByteArray build() const;
};

struct GPURecipe {
    QByteArray nonce;       // as stated beside the report
    QByteArray reportNonce; // as signed inside it
    ChainRecipe chain;
    QByteArray body = QByteArray(200, '\x77'); // of the report, behind the nonce

    std::function<void(QByteArray &)> onReport = [](QByteArray &) {}; // signature included
    std::function<void(std::vector<QByteArray> &)> onChain = [](auto &) {};
    std::function<void(QByteArray &)> onPEM = [](QByteArray &) {};
    std::function<void(QJsonObject &)> onEntry = [](QJsonObject &) {};

    [[nodiscard]] QJsonObject build() const;
};

struct Scenario {
    explicit Scenario(const EvidenceAuthority &authority = EvidenceAuthority::ofThisProcess());

    QString model;
    QByteArray nonce;
    QDateTime date;
    EvidencePins pins;
    QByteArray signingKey; // 65 bytes
    QString configurationText;
    QByteArray instanceID;
    QuoteRecipe quote;
    std::vector<GPURecipe> gpus; // two
    VeniceMeasurementAllowlist::Stack stack;

    std::function<void(VeniceMeasurementAllowlist::Stack &)> onAcceptedStack = [](auto &) {}; // list only
    std::function<void(TDXQuote::TDReport &)> onReport = [](auto &) {};
    std::function<void(QJsonObject &)> onPayload = [](QJsonObject &) {};
    std::function<void(QJsonObject &)> onInfo = [](QJsonObject &) {};
    std::function<void(QJsonObject &)> onDocument = [](QJsonObject &) {};

    [[nodiscard]] QByteArray quoteBytes() const;
    [[nodiscard]] QString payload() const; // GPU evidence as JSON
    [[nodiscard]] QJsonObject document() const;
    [[nodiscard]] VeniceMeasurementAllowlist allowlist() const;
    [[nodiscard]] QJsonObject signedList() const; // the allowlist as a list file would hold it

    // "ok", or the case of the failure with which the document is decoded or judged.
    [[nodiscard]] QString verdict() const;
    [[nodiscard]] VeniceAttestationVerifier::Question question() const;
};

// The key whose private part is 1, and its published address.
namespace KnownKey {
[[nodiscard]] QByteArray publicKey();
[[nodiscard]] QByteArray address();
} // namespace KnownKey

} // namespace morvane
