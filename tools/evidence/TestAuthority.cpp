#include "evidence/TestAuthority.h"

#include "utils/bytes/Hex.h"
#include "utils/text/UniversalTime.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QtEndian>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QByteArray sha256(const QByteArray &bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

template <typename T>
QByteArray littleEndian(T value)
{
    QByteArray bytes(sizeof(T), '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray withLength(const QByteArray &bytes)
{
    return littleEndian(static_cast<std::uint32_t>(bytes.size())) + bytes;
}

QByteArray qeReport(const QuoteRecipe &recipe)
{
    QByteArray report(384, '\x20');
    report[48] = static_cast<char>(recipe.qeAttributes);
    report.replace(128, 32, recipe.qeSigner);
    report.replace(256, 2, littleEndian(recipe.qeProduct));
    report.replace(320, 64,
                   sha256(recipe.attestationKey.publicKey() + recipe.qeAuthenticationData) +
                       QByteArray(32, '\0'));
    recipe.onQEReport(report);
    return report;
}

QByteArray signedBody(const QuoteRecipe &recipe)
{
    const auto &r = recipe.report;
    QByteArray body = littleEndian(recipe.version) + littleEndian(recipe.attestationKeyType) +
                      littleEndian(recipe.teeType) + QByteArray(40, '\x11') + r.teeTCBSVN +
                      QByteArray(48 + 48 + 8, '\x12') + r.tdAttributes + r.xfam + r.mrtd + r.mrconfigid +
                      r.mrowner + r.mrownerconfig + r.rtmr0 + r.rtmr1 + r.rtmr2 + r.rtmr3 + r.reportData;
    recipe.onSignedBody(body);
    return body;
}

QByteArray certificationData(const QuoteRecipe &recipe)
{
    const QByteArray report = qeReport(recipe);
    auto chain = EvidenceAuthority::certificatesOf(recipe.chain);
    recipe.onChain(chain);
    QByteArray pem = pemText(chain);
    recipe.onPEM(pem);
    QByteArray data = report + recipe.chain.front().key.sign(report) +
                      littleEndian(static_cast<std::uint16_t>(recipe.qeAuthenticationData.size())) +
                      recipe.qeAuthenticationData + littleEndian(recipe.pckDataType) + withLength(pem);
    recipe.onCertificationData(data);
    return data;
}

const QString prefixText = u"{\"name\":\"service\",\"host\":\""_s;
const QString suffixText = u"\",\"runner\":\"docker-compose\",\"note\":\"déjà\"}"_s;

VeniceReviewedConfiguration reviewedConfiguration()
{
    const QByteArray prefix = prefixText.toUtf8();
    const QByteArray suffix = suffixText.toUtf8();
    return {.id = u"test.configuration"_s,
            .label = u"Test configuration"_s,
            .prefixLength = prefix.size(),
            .prefixSHA256 = Hex::encode(sha256(prefix)),
            .suffixLength = suffix.size(),
            .suffixSHA256 = Hex::encode(sha256(suffix))};
}

TDXQuote::TDReport reportFor(const Scenario &scenario)
{
    TDXQuote::TDReport report = scenario.quote.report;
    const QByteArray text = scenario.configurationText.toUtf8();
    report.mrconfigid = VeniceReviewedConfiguration::expectedMrconfigid(text);
    report.rtmr3 = VeniceBootEvent::replay(scenario.stack.bootEvents, sha256(text), scenario.instanceID)
                       .value_or(QByteArray(48, '\x33'));
    report.reportData =
        VeniceAttestationVerifier::addressOf(scenario.signingKey).value_or(QByteArray(20, '\0')) +
        QByteArray(12, '\0') + scenario.nonce;
    scenario.onReport(report);
    return report;
}

QJsonObject entryOf(const VeniceMeasurementAllowlist::Stack &stack, const QString &model)
{
    const auto &c = stack.configurations.at(0);
    QJsonArray events;
    for (const auto &event : stack.bootEvents)
        events.append(QJsonObject{{u"name"_s, event.name},
                                  {u"payload"_s, event.payload ? QJsonValue(*event.payload) : QJsonValue()}});
    return {{u"id"_s, c.id},
            {u"model"_s, model},
            {u"stackLabel"_s, stack.label},
            {u"mrtd"_s, stack.mrtd},
            {u"rtmr0"_s, stack.rtmr0},
            {u"rtmr1"_s, stack.rtmr1},
            {u"rtmr2"_s, stack.rtmr2},
            {u"configuration"_s, QJsonObject{{u"label"_s, c.label},
                                             {u"prefixLength"_s, qint64(c.prefixLength)},
                                             {u"prefixSHA256"_s, c.prefixSHA256},
                                             {u"suffixLength"_s, qint64(c.suffixLength)},
                                             {u"suffixSHA256"_s, c.suffixSHA256}}},
            {u"bootEvents"_s, events}};
}

} // namespace

QByteArray KnownKey::publicKey()
{
    return QByteArray::fromHex("0479be667ef9dcbbac55a06295ce870b07029bfcdb2dce28d959f2815b16f81798"
                               "483ada7726a3c4655da4fbfc0e1108a8fd17b448a68554199c47d08ffb10d4b8");
}

QByteArray KnownKey::address()
{
    return QByteArray::fromHex("7e5f4552091a69125d5dfcb7b8c2659029395bdf");
}

QuoteRecipe::QuoteRecipe()
    : attestationKey([] {
        static const SigningKey key(SigningKey::Curve::P256);
        return key;
    }())
    , chain(EvidenceAuthority::ofThisProcess().intelChain)
{
    report.teeTCBSVN = QByteArray(16, '\x01');
    report.tdAttributes = QByteArray::fromHex("0000001000000000");
    report.xfam = QByteArray(8, '\x02');
    char filler = '\x03';
    for (QByteArray *measurement : {&report.mrtd, &report.mrconfigid, &report.mrowner, &report.mrownerconfig,
                                    &report.rtmr0, &report.rtmr1, &report.rtmr2, &report.rtmr3})
        *measurement = QByteArray(48, filler++);
    report.reportData = QByteArray(64, '\x40');
}

QByteArray QuoteRecipe::build() const
{
    const QByteArray body = signedBody(*this);
    QByteArray signatureData = attestationKey.sign(body) + attestationKey.publicKey() +
                               littleEndian(certificationDataType) + withLength(certificationData(*this));
    onSignatureData(signatureData);
    QByteArray quote = body + withLength(signatureData);
    onQuote(quote);
    return quote;
}

QJsonObject GPURecipe::build() const
{
    QByteArray report = QByteArray::fromHex("11e001ff") + reportNonce + body;
    report += chain.front().key.sign(report);
    onReport(report);
    auto certificates = EvidenceAuthority::certificatesOf(chain);
    onChain(certificates);
    QByteArray pem = pemText(certificates);
    onPEM(pem);
    QJsonObject entry{{u"arch"_s, u"HOPPER"_s},
                      {u"nonce"_s, Hex::encode(nonce)},
                      {u"evidence"_s, QString::fromLatin1(report.toBase64())},
                      {u"certificate"_s, QString::fromLatin1(pem.toBase64())}};
    onEntry(entry);
    return entry;
}

Scenario::Scenario(const EvidenceAuthority &authority)
    : model(u"e2ee-test-model"_s)
    , nonce(32, '\x5a')
    , date(UniversalTime::at(QDate(2026, 9, 1), QTime(12, 0)))
    , signingKey(KnownKey::publicKey())
    , configurationText(prefixText + u"host-7"_s + suffixText)
    , instanceID(20, '\x2b')
    , gpus(2, GPURecipe{.nonce = nonce, .reportNonce = nonce, .chain = authority.nvidiaChain})
{
    quote.chain = authority.intelChain;
    quote.qeSigner = authority.quotingEnclaveSigner;
    pins = authority.pins();
    stack = {.label = u"Test stack"_s,
             .mrtd = Hex::encode(quote.report.mrtd),
             .rtmr0 = Hex::encode(quote.report.rtmr0),
             .rtmr1 = Hex::encode(quote.report.rtmr1),
             .rtmr2 = Hex::encode(quote.report.rtmr2),
             .configurations = {reviewedConfiguration()},
             .bootEvents = {{u"system-preparing"_s, u""_s},
                            {u"app-id"_s, u"00aabb"_s},
                            {u"compose-hash"_s, std::nullopt},
                            {u"instance-id"_s, std::nullopt},
                            {u"system-ready"_s, u""_s}}};
}

QByteArray Scenario::quoteBytes() const
{
    QuoteRecipe recipe = quote;
    recipe.report = reportFor(*this);
    return recipe.build();
}

QString Scenario::payload() const
{
    QJsonArray list;
    for (const GPURecipe &gpu : gpus)
        list.append(gpu.build());
    QJsonObject object{
        {u"nonce"_s, Hex::encode(nonce)}, {u"arch"_s, u"HOPPER"_s}, {u"evidence_list"_s, list}};
    onPayload(object);
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

QJsonObject Scenario::document() const
{
    QJsonObject info{{u"tcb_info"_s, QJsonObject{{u"app_compose"_s, configurationText}}},
                     {u"instance_id"_s, Hex::encode(instanceID)}};
    onInfo(info);
    QJsonObject object{{u"model"_s, model},
                       {u"verified"_s, true},
                       {u"nonce"_s, Hex::encode(nonce)},
                       {u"intel_quote"_s, Hex::encode(quoteBytes())},
                       {u"signing_key"_s, Hex::encode(signingKey)},
                       {u"signing_address"_s, Hex::encode(KnownKey::address())},
                       {u"nvidia_payload"_s, payload()},
                       {u"tee_provider"_s, u"test"_s},
                       {u"info"_s, info}};
    onDocument(object);
    return object;
}

VeniceMeasurementAllowlist Scenario::allowlist() const
{
    VeniceMeasurementAllowlist list;
    auto accepted = stack;
    onAcceptedStack(accepted);
    list.stacksByModel[u"e2ee-test-model"_s] = {accepted};
    return list;
}

QJsonObject Scenario::signedList() const
{
    return {{u"formatVersion"_s, 1},
            {u"listVersion"_s, 3},
            {u"issuedAt"_s, u"2026-08-01T00:00:00Z"_s},
            {u"notAfter"_s, u"2026-12-01T00:00:00Z"_s},
            {u"entries"_s, QJsonArray{entryOf(stack, u"e2ee-test-model"_s)}},
            {u"revoked"_s, QJsonArray()}};
}

VeniceAttestationVerifier::Question Scenario::question() const
{
    return {.document = VeniceAttestationDocument::decode(document()),
            .model = u"e2ee-test-model"_s,
            .nonce = QByteArray(32, '\x5a'),
            .allowlist = allowlist(),
            .pins = pins,
            .date = date};
}

QString Scenario::verdict() const
{
    try {
        (void)VeniceAttestationVerifier::verify(question());
        return u"ok"_s;
    } catch (const VeniceAttestationDocument::DecodeError &error) {
        return error.caseText();
    } catch (const VeniceAttestationVerifier::Failure &failure) {
        return failure.caseText();
    }
}

} // namespace morvane
