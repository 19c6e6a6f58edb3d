#include "attestation/evidence/VeniceAttestationDocument.h"

#include "utils/bytes/Base64.h"
#include "utils/bytes/Hex.h"
#include "utils/text/Json.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using DecodeError = VeniceAttestationDocument::DecodeError;

constexpr qsizetype signingKeySize = 65;
constexpr qsizetype addressSize = 20;

std::optional<QString> nonEmptyString(const QJsonObject &object, QLatin1StringView key)
{
    auto text = Json::string(object, key);
    return text && !text->isEmpty() ? text : std::nullopt;
}

std::optional<QByteArray> quoteOf(const QJsonObject &object)
{
    if (const auto hex = nonEmptyString(object, "intel_quote"_L1)) {
        auto bytes = Hex::decode(*hex);
        if (!bytes)
            throw DecodeError(DecodeError::Case::noQuote);
        return bytes;
    }
    const auto base64 = Json::string(object, "quote_b64"_L1);
    return base64 ? Base64::decode(base64->toUtf8()) : std::nullopt;
}

std::optional<QByteArray> signingKeyOf(const QJsonObject &object)
{
    auto text = Json::string(object, "signing_key"_L1);
    if (!text)
        text = Json::string(object, "signing_public_key"_L1);
    if (!text || text->isEmpty())
        return std::nullopt;
    auto key = Hex::decode(*text);
    if (!key || key->size() != signingKeySize || key->front() != '\x04')
        throw DecodeError(DecodeError::Case::malformedSigningKey);
    return key;
}

std::optional<QByteArray> signingAddressOf(const QJsonObject &object)
{
    const auto text = nonEmptyString(object, "signing_address"_L1);
    if (!text)
        return std::nullopt;
    auto address = Hex::decode(*text);
    if (!address || address->size() != addressSize)
        throw DecodeError(DecodeError::Case::malformedSigningAddress);
    return address;
}

std::optional<QString> configurationTextOf(const QJsonObject &info)
{
    auto tcbInfo = Json::object(info, "tcb_info"_L1);
    if (const auto text = Json::string(info, "tcb_info"_L1))
        tcbInfo = Json::parseObject(text->toUtf8());
    return tcbInfo ? nonEmptyString(*tcbInfo, "app_compose"_L1) : std::nullopt;
}

// One spelling only, so that a server has one name.
std::optional<QByteArray> instanceIDOf(const QJsonObject &info)
{
    const auto text = Json::string(info, "instance_id"_L1);
    const auto isDigit = [](QChar c) { return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f'); };
    if (!text || text->size() != 40 || !std::all_of(text->begin(), text->end(), isDigit))
        return std::nullopt;
    return Hex::decode(*text);
}

} // namespace

QString VeniceAttestationDocument::DecodeError::caseText() const
{
    switch (m_case) {
    case Case::notJSON:
        return u"notJSON"_s;
    case Case::noQuote:
        return u"noQuote"_s;
    case Case::malformedSigningKey:
        return u"malformedSigningKey"_s;
    case Case::malformedSigningAddress:
        return u"malformedSigningAddress"_s;
    }
    return {};
}

VeniceAttestationDocument VeniceAttestationDocument::decode(const QJsonObject &object)
{
    const QJsonObject info = Json::object(object, "info"_L1).value_or(QJsonObject());
    const auto nonce = Json::string(object, "nonce"_L1);
    VeniceAttestationDocument document;
    document.intelQuote = quoteOf(object);
    document.signingPublicKey = signingKeyOf(object);
    document.signingAddress = signingAddressOf(object);
    document.configurationText = configurationTextOf(info);
    document.instanceID = instanceIDOf(info);
    document.model = Json::string(object, "model"_L1).value_or(QString());
    document.serverVerified = Json::boolean(object, "verified"_L1).value_or(false);
    document.echoedNonce = nonce ? Hex::decode(*nonce) : std::nullopt;
    document.nvidiaPayload = nonEmptyString(object, "nvidia_payload"_L1);
    document.teeProvider = Json::string(object, "tee_provider"_L1);
    document.teeHardware = Json::string(object, "tee_hardware"_L1);
    document.gpuEvidenceOmitted = Json::boolean(object, "gpu_evidence_omitted"_L1).value_or(false);
    return document;
}

VeniceAttestationDocument VeniceAttestationDocument::decode(QByteArrayView json)
{
    const auto object = Json::parseObject(json);
    if (!object)
        throw DecodeError(DecodeError::Case::notJSON);
    return decode(*object);
}

} // namespace morvane
