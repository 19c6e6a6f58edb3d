#include "attestation/evidence/BundledAllowlist.h"
#include "evidence/TestAuthority.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

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
    auto &configurations = scenario.stack.configurations;
    configurations.push_back({.id = u"other"_s});
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
    EXPECT_EQ(outcome(scenario, list.withdrawing({u"other"_s})), u"bootMeasurementMismatch"_s);
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
    const auto complete = [&stack](QLatin1StringView list, const QJsonObject &missing) {
        QJsonArray completed;
        for (const QJsonValue &value : stack[list].toArray()) {
            QVariantMap all = missing.toVariantMap();
            all.insert(value.toObject().toVariantMap());
            completed.append(QJsonObject::fromVariantMap(all));
        }
        stack[list] = completed;
    };
    complete("configurations"_L1,
             {{u"prefixSHA256"_s, QString(64, u'b')}, {u"suffixSHA256"_s, QString(64, u'c')}});
    EXPECT_TRUE(accepted().empty()); // boot events are still open
    complete("bootEvents"_L1, {{u"payload"_s, u"00"_s}});

    ASSERT_EQ(accepted().size(), 1U);
    const auto read = accepted()[0];
    EXPECT_EQ(read.label, u"NEAR AI dstack-nvidia 0.5.11 (GLM-5.3 Flash)"_s);
    EXPECT_TRUE(read.requiresGPUEvidence);
    EXPECT_EQ(read.configurations.size(), 2U);
    EXPECT_EQ(read.configurations[1].suffixLength, 12484);
    EXPECT_EQ(read.bootEvents.size(), 10U);
    EXPECT_TRUE(VeniceBootEvent::replay(read.bootEvents, QByteArray(32, 'c'), QByteArray(20, 'i')));
}

} // namespace morvane
