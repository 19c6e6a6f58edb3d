#include "attestation/ProofLedger.h"
#include "evidence/TestAuthority.h"
#include "utils/text/UniversalTime.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimeZone>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using Kind = ProofLedger::Place::Kind;

namespace {

const QDateTime start = UniversalTime::at(QDate(2026, 9, 1), QTime(12, 0));

ProofLedger::Entry sealedRow(qint64 proofAge, int gpus = 2, bool requiresGPUs = true)
{
    ProofLedger::Entry row{.startedAt = start, .place = {Kind::verifiedEnclave, u"e2ee-m"_s, {}}};
    row.attestation.emplace();
    row.attestation->verifiedGPUCount = gpus;
    row.attestation->requiresGPUEvidence = requiresGPUs;
    row.attestation->verifiedAt = start.addMSecs(-proofAge);
    return row;
}

QJsonObject exported(const ProofLedger &ledger, const QString &guidePage = {})
{
    return QJsonDocument::fromJson(ledger.exportData(start, guidePage)).object();
}

} // namespace

TEST(ProofLedgerTest, WhatARowSays)
{
    for (const auto &[age, text] : {std::pair{3000, u"Hardware verified earlier"_s},
                                    {2001, u"Hardware verified earlier"_s},
                                    {2000, u"Hardware verified"_s},
                                    {-60000, u"Hardware verified"_s}})
        EXPECT_EQ(sealedRow(age).resultText(), text) << age;
    const QString covered = u"Hardware and base system · "_s;
    EXPECT_EQ(sealedRow(0).attestation->summary(), covered + u"2 graphics chips"_s);
    EXPECT_EQ(sealedRow(0, 0).attestation->summary(), covered + u"no graphics chip proof"_s);
    EXPECT_EQ(sealedRow(0, 0, false).attestation->summary(), covered + u"graphics chips not checked"_s);
    for (const auto &[kind, text] : {std::pair{Kind::thisMac, u"Stayed on this computer"_s},
                                     {Kind::network, u"Stayed on your network"_s},
                                     {Kind::enclaveRefused, u"Nothing was sent"_s}})
        EXPECT_EQ((ProofLedger::Entry{.place = {kind, {}, {}}}.resultText()), text);
}

TEST(ProofLedgerTest, TheExportHoldsTheNewestRowsInOrder)
{
    ProofLedger ledger;
    EXPECT_EQ(exported(ledger)["turns"_L1].toArray().size(), 0);
    for (int i = 0; i <= 200; ++i)
        ledger.append({.startedAt = start.addSecs(i), .place = {Kind::network, u"m"_s, u"box"_s}});
    const QJsonArray turns = exported(ledger)["turns"_L1].toArray();
    ASSERT_EQ(turns.size(), 200);
    EXPECT_EQ(turns.first()["ranAt"_L1].toString(), u"2026-09-01T12:00:01Z"_s);
    EXPECT_EQ(turns.last()["ranAt"_L1].toString(), u"2026-09-01T12:03:20Z"_s);
    EXPECT_EQ(ProofLedger::exportFileName(start), u"morvane-2026-09-01-1200.json"_s);
    const QString page = u"https://maker.test/proof"_s;
    EXPECT_FALSE(exported(ledger)["howToCheck"_L1].toString().contains(u"https:"_s));
    EXPECT_TRUE(exported(ledger, page)["howToCheck"_L1].toString().endsWith(page));
}

TEST(ProofLedgerTest, ARowIsExportedWithWhatItHas)
{
    const Scenario scenario;
    ProofLedger ledger;
    ProofLedger::Entry row = sealedRow(0);
    row.attestation = ProofLedger::Attestation::of(VeniceAttestationVerifier::verify(scenario.question()));
    row.startedAt = scenario.date.addSecs(3);
    row.purpose = u"chat"_s;
    row.carrying = SensitiveData::memory;
    row.acceptedServersList = u"the list"_s;
    ledger.append(row);
    row.attestation->composeHash.reset();
    row.attestation->teeProvider.reset();
    ledger.append(row);
    ledger.append({.startedAt = start,
                   .place = {Kind::enclaveRefused, u"e2ee-m"_s, {}},
                   .note = u"refused"_s,
                   .acceptedServersList = u"the list"_s});
    ledger.append({.startedAt = start.toTimeZone(QTimeZone("Asia/Tokyo")),
                   .place = {Kind::yourOwnService, u"m"_s, u"a.test"_s}});

    const QJsonArray turns = exported(ledger)["turns"_L1].toArray();
    const QJsonObject proof = turns[0]["proof"_L1].toObject();
    EXPECT_EQ(proof.keys().join(u' '),
              u"acceptedServersList clientNonceHex composeHashHex gpuEvidenceRequired gpusVerifiedByThisMac "
              "intelTdxQuoteHex modelPublicKeyHex mrtdHex rtmr3Hex serverClaimedVerified signingAddressHex "
              "stack teeProvider verifiedThisTurn"_s);
    EXPECT_EQ(proof["stack"_L1].toString(), scenario.stack.label);
    EXPECT_EQ(proof["clientNonceHex"_L1].toString(), QString::fromLatin1(scenario.nonce.toHex()));
    EXPECT_EQ(proof["gpusVerifiedByThisMac"_L1].toInt(), 2);
    EXPECT_EQ(proof["verifiedThisTurn"_L1], QJsonValue(false));
    EXPECT_EQ(turns[0]["where"_L1].toString() + turns[0]["yourData"_L1].toString(),
              u"Verified enclave"_s + labelOf(SensitiveData::memory));
    EXPECT_TRUE(turns[1]["proof"_L1]["composeHashHex"_L1].isNull());
    EXPECT_TRUE(turns[1]["proof"_L1]["teeProvider"_L1].isNull());
    EXPECT_EQ(turns[2].toObject().keys().join(u' '), u"model notice purpose ranAt result where yourData"_s);
    EXPECT_EQ(turns[3].toObject().keys().join(u' '), u"host model purpose ranAt result where yourData"_s);
    EXPECT_EQ(turns[3]["ranAt"_L1].toString(), u"2026-09-01T12:00:00Z"_s);
}

} // namespace morvane
