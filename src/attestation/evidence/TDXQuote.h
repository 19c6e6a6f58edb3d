#pragma once

#include "attestation/evidence/PEMCertificates.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <exception>
#include <optional>
#include <variant>

namespace morvane {

// An Intel TDX quote, version 4, signed with ECDSA on P-256: what a server's hardware says about what it
// runs. Parsing proves nothing; TDXQuoteVerifier does.
struct TDXQuote {
    struct Header {
        std::uint16_t version = 0;
        std::uint16_t attestationKeyType = 0;
        std::uint32_t teeType = 0;
        bool operator==(const Header &) const = default;
    };

    // The measured state of the trust domain. Registers are 48 bytes each.
    struct TDReport {
        QByteArray teeTCBSVN;    // 16 bytes
        QByteArray tdAttributes; // 8 bytes; bit 0 of byte 0 means debug
        QByteArray xfam;         // 8 bytes
        QByteArray mrtd;
        QByteArray mrconfigid;
        QByteArray mrowner;
        QByteArray mrownerconfig;
        QByteArray rtmr0;
        QByteArray rtmr1;
        QByteArray rtmr2;
        QByteArray rtmr3;
        QByteArray reportData; // 64 bytes, chosen by the software inside

        // SHA-256 of the configuration text, where `mrconfigid` has the form that carries one.
        [[nodiscard]] std::optional<QByteArray> composeHash() const;

        bool operator==(const TDReport &) const = default;
    };

    // The module that keeps trust domains apart, as it was measured. Shown to people, judged by nothing.
    struct Module {
        QByteArray mrseam;         // 48 bytes
        QByteArray mrsignerseam;   // 48 bytes
        QByteArray seamAttributes; // 8 bytes
    };

    class ParseError final : public std::exception {
    public:
        struct TooShort {
            QString field; // the one the bytes end in
            bool operator==(const TooShort &) const = default;
        };
        struct UnsupportedVersion {
            std::uint16_t version;
            bool operator==(const UnsupportedVersion &) const = default;
        };
        struct UnsupportedTEEType {
            std::uint32_t type;
            bool operator==(const UnsupportedTEEType &) const = default;
        };
        struct UnsupportedAttestationKeyType {
            std::uint16_t type;
            bool operator==(const UnsupportedAttestationKeyType &) const = default;
        };
        struct UnexpectedCertificationDataType {
            std::uint16_t type;
            bool operator==(const UnexpectedCertificationDataType &) const = default;
        };
        struct NoCertificates {
            bool operator==(const NoCertificates &) const = default;
        };
        using Case =
            std::variant<TooShort, UnsupportedVersion, UnsupportedTEEType, UnsupportedAttestationKeyType,
                         UnexpectedCertificationDataType, NoCertificates>;

        ParseError(Case reason)
            : m_case(std::move(reason))
        {}

        [[nodiscard]] const Case &reason() const { return m_case; }
        [[nodiscard]] QString caseText() const;
        bool operator==(const ParseError &other) const { return m_case == other.m_case; }

    private:
        Case m_case;
    };

    QByteArray signedBody; // 632 bytes: header and report as they were signed
    Header header;
    Module module;
    TDReport report;
    QByteArray signature;         // 64 bytes, r then s
    QByteArray attestationKey;    // 64 bytes, X then Y
    QByteArray qeReport;          // 384 bytes
    QByteArray qeReportSignature; // 64 bytes
    QByteArray qeAuthenticationData;
    PEMCertificates::Chain certificateChain; // never empty

    // Bytes behind the last field of the quote or of a nested block are ignored. Throws ParseError.
    [[nodiscard]] static TDXQuote parse(QByteArrayView bytes);
};

} // namespace morvane
