#include "attestation/ProofLedger.h"
#include "utils/text/UniversalTime.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

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

} // namespace morvane
