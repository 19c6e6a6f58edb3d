#include "attestation/ProofExport.h"

#include "attestation/evidence/ProofExportFile.h"
#include "network/LedgerExport.h"
#include "utils/bytes/Hex.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString dateText(const QDateTime &date)
{
    return date.toUTC().toString(Qt::ISODate);
}

template <typename T>
QJsonValue orNull(const std::optional<T> &value)
{
    return value ? QJsonValue(*value) : QJsonValue(QJsonValue::Null);
}

QString whatThisIs()
{
    return u"A proof here covers the server's hardware and the base system image it started from. It does "
           u"not "
           "cover the programs the server's operator loaded afterward: this %1 does not check those, so this "
           "file is not evidence of what software ran beside your message. This file is also %2's own record "
           "of what it did, so treat the rows as a map and the quotes as the evidence. The quotes are "
           "checkable by anyone; the claim that a given row is the turn you just typed is not, and a packet "
           "capture is what settles that."_s.arg(DesktopWords::here().device, QString(Product::name));
}

QString howToCheck(const QJsonArray &turns, const QString &guidePage)
{
    const QString steps =
        u"In plain words, for a Private cloud turn: Before sending, this %1 checks that the server is "
        u"genuine "
        "sealed hardware and encrypts your message to it. It does not check every program the server's "
        "operator runs. The technical steps: each quote is an Intel TDX quote this %1 verified against "
        "Intel's pinned root before encrypting anything to the key inside it. To check one without trusting "
        "Morvane: decode intelTdxQuoteHex, confirm the last 32 bytes of REPORTDATA are clientNonceHex and "
        "the first 20 are signingAddressHex, then run it through dstack-verifier or Phala's Trust Center. "
        "mrtdHex is the base system image the server started from; it has to match the measurement published "
        "for the stack named above. "_s.arg(DesktopWords::here().device) +
        ProofExportFile::statement(turns);
    return guidePage.isEmpty() ? steps : steps + u" The same, step by step: "_s + guidePage;
}

QJsonObject proofOf(const ProofLedger::Entry &entry, const ProofLedger::Attestation &attestation)
{
    const auto &hash = attestation.composeHash;
    return {{u"stack"_s, attestation.stackLabel},
            {u"verifiedThisTurn"_s, !entry.wasVerifiedEarlier()},
            {u"clientNonceHex"_s, Hex::encode(attestation.nonce)},
            {u"mrtdHex"_s, Hex::encode(attestation.mrtd)},
            {u"rtmr3Hex"_s, Hex::encode(attestation.rtmr3)},
            {u"teeProvider"_s, orNull(attestation.teeProvider)},
            {u"composeHashHex"_s, orNull(hash ? std::optional(Hex::encode(*hash)) : std::nullopt)},
            {u"intelTdxQuoteHex"_s, Hex::encode(attestation.quote)},
            {u"signingAddressHex"_s, Hex::encode(attestation.signingAddress)},
            {u"modelPublicKeyHex"_s, Hex::encode(attestation.modelPublicKey)},
            {u"gpusVerifiedByThisMac"_s, attestation.verifiedGPUCount},
            {u"gpuEvidenceRequired"_s, attestation.requiresGPUEvidence},
            {u"serverClaimedVerified"_s, attestation.serverClaimedVerified},
            {u"acceptedServersList"_s, orNull(entry.acceptedServersList)}};
}

QJsonObject turnOf(const ProofLedger::Entry &entry)
{
    using Kind = ProofLedger::Place::Kind;
    const ProofLedger::Place &place = entry.place;
    QJsonObject turn{{u"ranAt"_s, dateText(entry.startedAt)},
                     {u"where"_s, place.plainName()},
                     {u"model"_s, place.model},
                     {u"purpose"_s, entry.purpose},
                     {u"yourData"_s, LedgerExport::carriedLabels(entry.carrying)},
                     {u"result"_s, entry.resultText()}};
    if (place.kind == Kind::network || place.kind == Kind::yourOwnService)
        turn.insert(u"host"_s, place.host);
    if (entry.note)
        turn.insert(u"notice"_s, *entry.note);
    if (entry.attestation)
        turn.insert(u"proof"_s, proofOf(entry, *entry.attestation));
    return turn;
}

} // namespace

QByteArray ProofExport::json(const std::vector<ProofLedger::Entry> &entries, const QDateTime &exported,
                             const QString &guidePage)
{
    QJsonArray turns;
    for (const ProofLedger::Entry &entry : entries)
        turns.append(turnOf(entry));
    return QJsonDocument(QJsonObject{{u"exported"_s, dateText(exported)},
                                     {u"howToCheck"_s, howToCheck(turns, guidePage)},
                                     {u"whatThisIs"_s, whatThisIs()},
                                     {u"turns"_s, turns}})
        .toJson();
}

} // namespace morvane
