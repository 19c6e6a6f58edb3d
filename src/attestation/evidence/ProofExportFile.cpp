#include "attestation/evidence/ProofExportFile.h"

#include "attestation/evidence/CaseText.h"
#include "attestation/evidence/Digest.h"
#include "utils/bytes/Hex.h"
#include "utils/text/Json.h"

#include <QJsonDocument>
#include <QRegularExpression>
#include <QStringList>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Error = ProofExportFile::ReadError;
using Plain = ProofExportFile::ReadError::Plain;

// The members of one object, each of which must be read or named as known.
class MemberReader {
public:
    MemberReader(const QJsonObject &object, const QString &prefix)
        : m_object(object)
        , m_prefix(prefix)
    {}

    // QJsonObject keeps its names sorted, so the first is reported.
    void requireNames(const QStringList &required, const QStringList &optional = {}) const
    {
        for (const QString &name : m_object.keys()) {
            if (!required.contains(name) && !optional.contains(name))
                throw Error(Error::UnknownField{m_prefix + name});
        }
        for (const QString &name : required) {
            if (!m_object.contains(name))
                throw Error(Error::MissingField{m_prefix + name});
        }
    }

    template <typename T>
    T require(std::optional<T> value, QLatin1StringView name) const
    {
        if (!value)
            throw Error(Error::BadValue{m_prefix + name});
        return *std::move(value);
    }

    QString text(QLatin1StringView name) const { return require(Json::string(m_object, name), name); }
    bool flag(QLatin1StringView name) const { return require(Json::boolean(m_object, name), name); }
    bool has(QLatin1StringView name) const { return m_object.contains(name); }
    bool isNull(QLatin1StringView name) const { return m_object.value(name).isNull(); }

    QJsonObject object(QLatin1StringView name) const { return require(Json::object(m_object, name), name); }
    std::vector<QJsonObject> objects(QLatin1StringView name) const
    {
        return require(Json::objects(m_object, name), name);
    }

    std::int64_t count(QLatin1StringView name) const
    {
        const auto number = Json::integer(m_object, name);
        return require(number && *number >= 0 ? number : std::nullopt, name);
    }

    // `size` bytes, or at least one where it is 0.
    QByteArray bytes(QLatin1StringView name, qsizetype size = 0) const
    {
        const QString hex = text(name);
        const auto decoded = Hex::decode(hex);
        const bool isGood = decoded && Hex::encode(*decoded) == hex && !decoded->isEmpty() &&
                            (size == 0 || decoded->size() == size);
        return require(isGood ? decoded : std::nullopt, name);
    }

    QDateTime date(QLatin1StringView name) const
    {
        const QString iso = text(name);
        const QDateTime date = QDateTime::fromString(iso, Qt::ISODate).toUTC();
        const bool isGood = date.isValid() && date.toString(Qt::ISODate) == iso;
        return require(isGood ? std::optional(date) : std::nullopt, name);
    }

    std::optional<QString> textOrNull(QLatin1StringView name) const
    {
        return isNull(name) ? std::nullopt : std::optional(text(name));
    }

private:
    const QJsonObject &m_object;
    QString m_prefix;
};

ProofExportFile::Proof readProof(const QJsonObject &object)
{
    const MemberReader reader(object, u"proof."_s);
    reader.requireNames({u"stack"_s, u"verifiedThisTurn"_s, u"clientNonceHex"_s, u"mrtdHex"_s, u"rtmr3Hex"_s,
                         u"teeProvider"_s, u"composeHashHex"_s, u"intelTdxQuoteHex"_s, u"signingAddressHex"_s,
                         u"modelPublicKeyHex"_s, u"gpusVerifiedByThisMac"_s, u"gpuEvidenceRequired"_s,
                         u"serverClaimedVerified"_s, u"acceptedServersList"_s});
    ProofExportFile::Proof proof;
    proof.stack = reader.text("stack"_L1);
    proof.verifiedThisTurn = reader.flag("verifiedThisTurn"_L1);
    proof.nonce = reader.bytes("clientNonceHex"_L1, 32);
    proof.mrtd = reader.bytes("mrtdHex"_L1, 48);
    proof.rtmr3 = reader.bytes("rtmr3Hex"_L1, 48);
    proof.teeProvider = reader.textOrNull("teeProvider"_L1);
    if (!reader.isNull("composeHashHex"_L1))
        proof.composeHash = reader.bytes("composeHashHex"_L1, 32);
    proof.quote = reader.bytes("intelTdxQuoteHex"_L1);
    proof.signingAddress = reader.bytes("signingAddressHex"_L1, 20);
    proof.modelPublicKey = reader.bytes("modelPublicKeyHex"_L1, 65);
    proof.gpuCount = reader.count("gpusVerifiedByThisMac"_L1);
    proof.requiresGPUEvidence = reader.flag("gpuEvidenceRequired"_L1);
    proof.serverClaimedVerified = reader.flag("serverClaimedVerified"_L1);
    proof.acceptedServersList = reader.textOrNull("acceptedServersList"_L1);
    return proof;
}

// In JSON that is known to be good, each member has one colon outside of texts.
qsizetype membersOf(QByteArrayView json)
{
    qsizetype members = 0;
    bool inText = false;
    for (qsizetype at = 0; at < json.size(); ++at) {
        const char c = json[at];
        if (inText && c == '\\')
            ++at;
        else if (c == '"')
            inText = !inText;
        else if (!inText && c == ':')
            ++members;
    }
    return members;
}

qsizetype membersOf(const QJsonValue &value)
{
    qsizetype members = 0;
    if (value.isArray()) {
        for (const QJsonValue &element : value.toArray())
            members += membersOf(element);
        return members;
    }
    const QJsonObject object = value.toObject();
    for (const QJsonValue &member : object)
        members += 1 + membersOf(member);
    return members;
}

// Qt keeps names sorted.
QString digestOf(const QJsonArray &turns)
{
    return Digest::sha256Hex(QJsonDocument(turns).toJson(QJsonDocument::Compact));
}

ProofExportFile::Rows rowsAgainst(const QString &howToCheck, const QJsonArray &turns)
{
    static const QRegularExpression pattern(u"jq -cjS \\.turns\\) have the SHA-256 ([0-9a-f]{64})"_s);
    const QRegularExpressionMatch stated = pattern.match(howToCheck);
    if (!stated.hasMatch())
        return ProofExportFile::Rows::unstated;
    return stated.captured(1) == digestOf(turns) ? ProofExportFile::Rows::asExported
                                                 : ProofExportFile::Rows::changed;
}

struct CaseTextOf {
    QString operator()(const Error::UnknownField &e) const
    {
        return CaseText::of("unknownField"_L1, {CaseText::quoted(e.field)});
    }
    QString operator()(const Error::MissingField &e) const
    {
        return CaseText::of("missingField"_L1, {CaseText::quoted(e.field)});
    }
    QString operator()(const Error::BadValue &e) const
    {
        return CaseText::of("badValue"_L1, {CaseText::quoted(e.field)});
    }
    QString operator()(Plain plain) const
    {
        switch (plain) {
        case Plain::tooLarge:
            return u"tooLarge"_s;
        case Plain::notJSON:
            return u"notJSON"_s;
        case Plain::repeatedField:
            return u"repeatedField"_s;
        }
        return {};
    }
};

} // namespace

QString ProofExportFile::ReadError::caseText() const
{
    return std::visit(CaseTextOf{}, m_case);
}

ProofExportFile::Turn ProofExportFile::Turn::read(const QJsonObject &row)
{
    const MemberReader reader(row, QString());
    reader.requireNames({u"ranAt"_s, u"where"_s, u"model"_s, u"purpose"_s, u"yourData"_s, u"result"_s},
                        {u"host"_s, u"notice"_s, u"proof"_s});
    Turn turn;
    turn.ranAt = reader.date("ranAt"_L1);
    turn.where = reader.text("where"_L1);
    turn.model = reader.text("model"_L1);
    turn.purpose = reader.text("purpose"_L1);
    turn.yourData = reader.text("yourData"_L1);
    turn.result = reader.text("result"_L1);
    if (reader.has("host"_L1))
        turn.host = reader.text("host"_L1);
    if (reader.has("notice"_L1))
        turn.notice = reader.text("notice"_L1);
    if (reader.has("proof"_L1))
        turn.proof = readProof(reader.object("proof"_L1));
    return turn;
}

QString ProofExportFile::statement(const QJsonArray &turns)
{
    return u"To see whether this file changed since the export: its turns as compact JSON with sorted names "
           "(jq -cjS .turns) have the SHA-256 %1. Nothing signs that, so it shows damage and not forgery."_s
               .arg(digestOf(turns));
}

ProofExportFile ProofExportFile::read(QByteArrayView json)
{
    if (json.size() > sizeLimit)
        throw Error(Plain::tooLarge);
    const auto object = Json::parseObject(json);
    if (!object)
        throw Error(Plain::notJSON);
    if (membersOf(json) != membersOf(QJsonValue(*object)))
        throw Error(Plain::repeatedField);
    const MemberReader reader(*object, QString());
    reader.requireNames({u"exported"_s, u"howToCheck"_s, u"turns"_s, u"whatThisIs"_s});
    static_cast<void>(reader.text("whatThisIs"_L1));
    ProofExportFile file{reader.date("exported"_L1), reader.objects("turns"_L1),
                         rowsAgainst(reader.text("howToCheck"_L1), (*object)["turns"_L1].toArray())};
    if (file.turns.size() > turnLimit)
        throw Error(Error::BadValue{u"turns"_s});
    return file;
}

} // namespace morvane
