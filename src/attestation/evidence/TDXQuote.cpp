#include "attestation/evidence/TDXQuote.h"

#include "attestation/evidence/CaseText.h"
#include "utils/bytes/ByteReader.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Error = TDXQuote::ParseError;

constexpr std::uint16_t supportedVersion = 4;
constexpr std::uint32_t tdxTEEType = 0x81;
constexpr std::uint16_t ecdsaP256KeyType = 2;
constexpr std::uint16_t qeReportCertificationType = 6;
constexpr std::uint16_t pckChainType = 5;

constexpr qsizetype signedBodySize = 632;
constexpr qsizetype measurementSize = 48;

// Reads named fields of one block in a row. A field that the block can't hold is TooShort with its name.
class FieldReader {
public:
    explicit FieldReader(QByteArrayView block)
        : m_reader(std::as_bytes(std::span(block.data(), static_cast<std::size_t>(block.size()))))
    {}

    QByteArray bytes(qsizetype count, QLatin1StringView field)
    {
        const auto read = require(m_reader.read(static_cast<std::size_t>(count)), field);
        return {reinterpret_cast<const char *>(read.data()), count};
    }

    std::uint16_t uint16(QLatin1StringView field) { return require(m_reader.readUInt16(), field); }
    std::uint32_t uint32(QLatin1StringView field) { return require(m_reader.readUInt32(), field); }

private:
    template <typename T>
    static T require(std::optional<T> value, QLatin1StringView field)
    {
        if (!value)
            throw Error(Error::TooShort{QString(field)});
        return *value;
    }

    ByteReader m_reader;
};

// The tests come behind all three reads, and the key type last.
TDXQuote::Header readHeader(FieldReader &reader)
{
    TDXQuote::Header header;
    header.version = reader.uint16("version"_L1);
    header.attestationKeyType = reader.uint16("attestation key type"_L1);
    header.teeType = reader.uint32("TEE type"_L1);
    if (header.version != supportedVersion)
        throw Error(Error::UnsupportedVersion{header.version});
    if (header.teeType != tdxTEEType)
        throw Error(Error::UnsupportedTEEType{header.teeType});
    if (header.attestationKeyType != ecdsaP256KeyType)
        throw Error(Error::UnsupportedAttestationKeyType{header.attestationKeyType});
    reader.bytes(40, "header tail"_L1);
    return header;
}

void readReport(TDXQuote &quote, FieldReader &reader)
{
    TDXQuote::TDReport &report = quote.report;
    report.teeTCBSVN = reader.bytes(16, "tee_tcb_svn"_L1);
    quote.module.mrseam = reader.bytes(measurementSize, "mrseam"_L1);
    quote.module.mrsignerseam = reader.bytes(measurementSize, "mrsignerseam"_L1);
    quote.module.seamAttributes = reader.bytes(8, "seamattributes"_L1);
    report.tdAttributes = reader.bytes(8, "tdattributes"_L1);
    report.xfam = reader.bytes(8, "xfam"_L1);
    report.mrtd = reader.bytes(measurementSize, "mrtd"_L1);
    report.mrconfigid = reader.bytes(measurementSize, "mrconfigid"_L1);
    report.mrowner = reader.bytes(measurementSize, "mrowner"_L1);
    report.mrownerconfig = reader.bytes(measurementSize, "mrownerconfig"_L1);
    report.rtmr0 = reader.bytes(measurementSize, "rtmr0"_L1);
    report.rtmr1 = reader.bytes(measurementSize, "rtmr1"_L1);
    report.rtmr2 = reader.bytes(measurementSize, "rtmr2"_L1);
    report.rtmr3 = reader.bytes(measurementSize, "rtmr3"_L1);
    report.reportData = reader.bytes(64, "reportdata"_L1);
}

void requireCertificationType(std::uint16_t type, std::uint16_t expected)
{
    if (type != expected)
        throw Error(Error::UnexpectedCertificationDataType{type});
}

void readCertificationData(TDXQuote &quote, FieldReader reader)
{
    quote.qeReport = reader.bytes(384, "QE report"_L1);
    quote.qeReportSignature = reader.bytes(64, "QE report signature"_L1);
    const auto authenticationLength = reader.uint16("QE auth data length"_L1);
    quote.qeAuthenticationData = reader.bytes(authenticationLength, "QE auth data"_L1);
    requireCertificationType(reader.uint16("PCK data type"_L1), pckChainType);
    const auto chainLength = reader.uint32("PCK data length"_L1);
    quote.certificateChain =
        PEMCertificates::blocks(QByteArrayView(reader.bytes(chainLength, "PCK chain"_L1)));
    if (quote.certificateChain.empty())
        throw Error(Error::NoCertificates{});
}

void readSignatureData(TDXQuote &quote, FieldReader reader)
{
    quote.signature = reader.bytes(64, "quote signature"_L1);
    quote.attestationKey = reader.bytes(64, "attestation key"_L1);
    requireCertificationType(reader.uint16("certification data type"_L1), qeReportCertificationType);
    const auto length = reader.uint32("certification data length"_L1);
    const QByteArray block = reader.bytes(length, "certification data"_L1);
    readCertificationData(quote, FieldReader(block));
}

struct CaseTextOf {
    QString operator()(const Error::TooShort &e) const
    {
        return CaseText::of("tooShort"_L1, {CaseText::quoted(e.field)});
    }
    QString operator()(const Error::UnsupportedVersion &e) const
    {
        return CaseText::of("unsupportedVersion"_L1, {QString::number(e.version)});
    }
    QString operator()(const Error::UnsupportedTEEType &e) const
    {
        return CaseText::of("unsupportedTEEType"_L1, {QString::number(e.type)});
    }
    QString operator()(const Error::UnsupportedAttestationKeyType &e) const
    {
        return CaseText::of("unsupportedAttestationKeyType"_L1, {QString::number(e.type)});
    }
    QString operator()(const Error::UnexpectedCertificationDataType &e) const
    {
        return CaseText::of("unexpectedCertificationDataType"_L1, {QString::number(e.type)});
    }
    QString operator()(const Error::NoCertificates &) const { return CaseText::of("noCertificates"_L1); }
};

} // namespace

std::optional<QByteArray> TDXQuote::TDReport::composeHash() const
{
    constexpr qsizetype hashEnd = 1 + 32;
    const bool carriesHash =
        mrconfigid.size() == measurementSize && mrconfigid[0] == '\x01' &&
        std::all_of(mrconfigid.begin() + hashEnd, mrconfigid.end(), [](char byte) { return byte == '\0'; });
    return carriesHash ? std::optional(mrconfigid.mid(1, 32)) : std::nullopt;
}

QString TDXQuote::ParseError::caseText() const
{
    return std::visit(CaseTextOf{}, m_case);
}

TDXQuote TDXQuote::parse(QByteArrayView bytes)
{
    TDXQuote quote;
    FieldReader reader(bytes);
    quote.header = readHeader(reader);
    readReport(quote, reader);
    quote.signedBody = FieldReader(bytes).bytes(signedBodySize, "TD report"_L1);
    const auto length = reader.uint32("signature data length"_L1);
    const QByteArray block = reader.bytes(length, "signature data"_L1);
    readSignatureData(quote, FieldReader(block));
    return quote;
}

} // namespace morvane
