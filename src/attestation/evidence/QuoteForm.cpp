#include "attestation/evidence/QuoteForm.h"

#include <QtEndian>

#include <algorithm>

namespace morvane {

namespace {

constexpr std::uint16_t qeReportCertificationType = 6;
constexpr std::uint16_t pckChainType = 5;
constexpr qsizetype textWidth = 64;

template <typename T>
QByteArray littleEndian(T value)
{
    QByteArray bytes(sizeof(T), '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray withLength(const QByteArray &block)
{
    return littleEndian(static_cast<std::uint32_t>(block.size())) + block;
}

QByteArray textOf(const PEMCertificates::Chain &chain)
{
    QByteArray text;
    for (const QByteArray &certificate : chain) {
        const QByteArray base64 = certificate.toBase64();
        text += "-----BEGIN CERTIFICATE-----\n";
        for (qsizetype at = 0; at < base64.size(); at += textWidth)
            text += base64.mid(at, textWidth) + '\n';
        text += "-----END CERTIFICATE-----\n";
    }
    return text;
}

QByteArray written(const TDXQuote &quote, const QByteArray &certificates)
{
    const QByteArray &authentication = quote.qeAuthenticationData;
    const QByteArray certification = quote.qeReport + quote.qeReportSignature +
                                     littleEndian(static_cast<std::uint16_t>(authentication.size())) +
                                     authentication + littleEndian(pckChainType) + withLength(certificates);
    return quote.signedBody + withLength(quote.signature + quote.attestationKey +
                                         littleEndian(qeReportCertificationType) + withLength(certification));
}

// How far `bytes` are what was `expected`, and zeros from there on.
qsizetype commonLength(QByteArrayView bytes, QByteArrayView expected)
{
    const auto [other, inExpected] =
        std::mismatch(bytes.begin(), bytes.end(), expected.begin(), expected.end());
    if (inExpected != expected.end())
        return std::distance(bytes.begin(), other);
    return std::distance(bytes.begin(), std::find_if(other, bytes.end(), [](char c) { return c != '\0'; }));
}

} // namespace

std::optional<qsizetype> QuoteForm::firstStrayByte(QByteArrayView bytes, const TDXQuote &quote)
{
    const QByteArray certificates = textOf(quote.certificateChain);
    const qsizetype regular = std::max(commonLength(bytes, written(quote, certificates)),
                                       commonLength(bytes, written(quote, certificates + '\0')));
    return regular == bytes.size() ? std::nullopt : std::optional(regular);
}

} // namespace morvane
