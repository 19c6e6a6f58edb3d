#include "network/NetworkLedger.h"
#include "network/LedgerExport.h"
#include "support/TestData.h"
#include "utils/text/UniversalTime.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

NetworkLedger::Entry row(int number, const EgressOutcome &outcome = {EgressOutcome::Completed{200}})
{
    NetworkLedger::Entry entry;
    entry.host = QString::number(number);
    entry.outcome = outcome;
    return entry;
}

TEST(NetworkLedgerTest, KeepsTheNewestFiveHundredAndWhatIsStillRunning)
{
    const EgressOutcome running{EgressOutcome::InFlight{}};
    NetworkLedger ledger;
    for (int i = 0; i < 502; ++i)
        ledger.record(row(i, i == 1 ? running : EgressOutcome{}));
    auto [entries, revision] = ledger.snapshot();
    ASSERT_EQ(entries.size(), 500U);
    EXPECT_EQ(entries[0].host, u"1"_s);
    EXPECT_EQ(entries[1].host, u"3"_s);
    EXPECT_EQ(entries.back().host, u"501"_s);
    std::set<QUuid> ids;
    for (const auto &entry : entries)
        ids.insert(entry.id);
    EXPECT_EQ(ids.size(), 500U);

    ledger.clear();
    for (int i = 0; i < 510; ++i)
        ledger.record(row(i, running));
    EXPECT_EQ(ledger.snapshot().entries.size(), 510U); // nothing finished to drop
    EXPECT_EQ(ledger.snapshot().revision, 502U + 1U + 510U);
}

TEST(LedgerRingTest, AnyThreadMayAppendAndFindsItsRowById)
{
    LedgerRing<NetworkLedger::Entry> ring(150);
    const auto work = [&ring] {
        for (int i = 0; i < 100; ++i) {
            const QUuid id = ring.append(row(i));
            const auto [entries, revision] = ring.snapshot();
            ASSERT_EQ(entries.size(), std::min<std::uint64_t>(revision, 150)); // of one moment
            ASSERT_TRUE(std::any_of(entries.begin(), entries.end(),
                                    [&](const auto &entry) { return entry.id == id; }));
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(ring.snapshot().revision, 200U);
}

TEST(LedgerExportTest, QuotesEveryFieldInAFileNamedAfterItsMinute)
{
    NetworkLedger::Entry refused;
    refused.startedAt = UniversalTime::at({2026, 3, 1}, {9, 5, 7, 80});
    refused.host = u"(no host)"_s;
    refused.feature = EgressFeature::serverList;
    refused.outcome = {EgressOutcome::Blocked{u"no \"host\", none"_s}};
    NetworkLedger::Entry sent = refused;
    sent.host = u"::1"_s;
    sent.feature = EgressFeature::aiModel;
    sent.carrying = SensitiveData::screenText | SensitiveData::image | SensitiveData::memory;
    sent.bytesSent = 5'000'000'000;
    sent.bytesReceived = 12;
    sent.outcome = {EgressOutcome::Completed{204}};

    EXPECT_EQ(LedgerExport::csv({refused, sent}).toStdString(), TestData::text("network/ledger.csv"));
    EXPECT_EQ(LedgerExport::fileName(QDateTime({2026, 3, 1}, {9, 5, 59})),
              u"morvane-network-ledger-2026-03-01-0905.csv"_s);
}

} // namespace

} // namespace morvane
