#include "attestation/evidence/BundledAllowlist.h"
#include "support/evidence/TestAuthority.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Source = VeniceMeasurementAllowlist::Source;
using Refusal = VeniceMeasurementAllowlist::Refusal;

// What a good server's report gets from `list`.
QString outcome(const Scenario &scenario, const VeniceMeasurementAllowlist &list)
{
    const auto question = scenario.question();
    const auto report = TDXQuote::parse(*question.document.intelQuote).report;
    try {
        return list
            .match(report, question.document.configurationText, question.document.instanceID, question.model)
            .hostLabel;
    } catch (const Refusal &refusal) {
        return refusal.caseText();
    }
}

} // namespace

TEST(AllowlistTest, TheFurthestCandidateDecidesTheRefusal)
{
    Scenario scenario;
    scenario.configurationText.replace(u"host-7"_s, u"Host"_s);
    auto badPrefix = scenario.stack.configurations[0];
    badPrefix.prefixSHA256 = QString(64, u'0');
    scenario.stack.configurations.push_back(badPrefix);
    auto &configurations = scenario.stack.configurations;
    for (int order = 0; order < 2; ++order) {
        EXPECT_EQ(outcome(scenario, scenario.allowlist()), u"hostLabelNotAllowed"_s) << order;
        std::swap(configurations[0], configurations[1]);
    }
}

TEST(AllowlistTest, ASecondStackOfTheSameImageMayMatch)
{
    const Scenario scenario;
    auto list = scenario.allowlist();
    auto &stacks = list.stacksByModel[u"e2ee-test-model"_s];
    auto otherEvents = scenario.stack;
    otherEvents.bootEvents.pop_back();
    stacks.insert(stacks.begin(), otherEvents);
    EXPECT_EQ(outcome(scenario, list), u"host-7"_s);
    stacks.pop_back();
    EXPECT_EQ(outcome(scenario, list), u"bootMeasurementMismatch"_s);
    EXPECT_EQ(outcome(scenario, {}), u"imageNotListed"_s);
}

TEST(AllowlistTest, WithdrawnConfigurationsAreGone)
{
    const Scenario scenario;
    const auto list = scenario.allowlist();
    EXPECT_EQ(outcome(scenario, list.withdrawing({u"other"_s})), u"host-7"_s);
    EXPECT_TRUE(list.withdrawing({u"test.configuration"_s}).stacksByModel.empty());
}

TEST(AllowlistTest, SourcesHaveWords)
{
    const QDateTime date(QDate(2026, 9, 1), QTime(0, 0), Qt::UTC);
    EXPECT_EQ(Source().text(), u"Built into this version of MorvaneGPT"_s);
    EXPECT_EQ(Source(Source::SignedList{12, date}).text(),
              u"Version 12, signed by Morvane, good until September 1, 2026"_s);
    EXPECT_EQ(Source(Source::ExpiredList{12, date.addSecs(-1)}).text(),
              u"Version 12 expired on August 31, 2026. Until a newer list arrives, this Mac accepts only the "
              u"servers "
              "built into this version of MorvaneGPT."_s);
}

// What the production deployment leaves open is filled in here with minted values, so that the day they are
// published nothing else has to change.
TEST(BundledAllowlistTest, TheDeploymentsStackCountsOnceItIsComplete)
{
    QFile file(QStringLiteral(MORVANE_SOURCE_DIR "/deployment/production.json"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QJsonObject stack = QJsonDocument::fromJson(file.readAll())["acceptedServers"_L1][0].toObject();
    const auto accepted = [&] {
        return BundledAllowlist::read(QJsonDocument(QJsonArray{stack}).toJson())
            .stacks(u"e2ee-glm-5-3-flash"_s);
    };
    EXPECT_TRUE(accepted().empty());
    EXPECT_TRUE(BundledAllowlist::ofThisBuild().stacksByModel.empty());

    for (const auto key : {"mrtd"_L1, "rtmr0"_L1, "rtmr1"_L1, "rtmr2"_L1})
        stack[key] = QString(96, u'a');
    QJsonArray configurations;
    for (const QJsonValue &value : stack["configurations"_L1].toArray()) {
        QJsonObject configuration = value.toObject();
        configuration["prefixSHA256"_L1] = QString(64, u'b');
        configuration["suffixSHA256"_L1] = QString(64, u'c');
        configurations.append(configuration);
    }
    stack["configurations"_L1] = configurations;
    EXPECT_TRUE(accepted().empty()); // boot events are still open
    QJsonArray events;
    for (const QJsonValue &value : stack["bootEvents"_L1].toArray()) {
        QJsonObject event = value.toObject();
        if (!event.contains("payload"_L1))
            event["payload"_L1] = u"00"_s;
        events.append(event);
    }
    stack["bootEvents"_L1] = events;

    ASSERT_EQ(accepted().size(), 1U);
    const auto complete = accepted()[0];
    EXPECT_EQ(complete.label, u"NEAR AI dstack-nvidia 0.5.11 (GLM-5.3 Flash)"_s);
    EXPECT_TRUE(complete.requiresGPUEvidence);
    EXPECT_EQ(complete.configurations.size(), 2U);
    EXPECT_EQ(complete.configurations[1].suffixLength, 12484);
    EXPECT_EQ(complete.bootEvents.size(), 10U);
    EXPECT_EQ(std::count_if(complete.bootEvents.begin(), complete.bootEvents.end(),
                            [](const auto &event) { return !event.payload; }),
              2);
    EXPECT_TRUE(VeniceBootEvent::replay(complete.bootEvents, QByteArray(32, 'c'), QByteArray(20, 'i')));
}

} // namespace morvane
