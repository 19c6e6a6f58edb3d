#include "attestation/evidence/BundledAllowlist.h"
#include "attestation/evidence/ListSignature.h"
#include "attestation/evidence/VeniceSignedMeasurementList.h"
#include "evidence/ListKey.h"
#include "evidence/TestAuthority.h"
#include "support/TestData.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using List = VeniceSignedMeasurementList;

// What is said of `list` where versions below 2 have been overtaken.
QString judgement(const QByteArray &json)
{
    try {
        (void)List::read(json, 2);
        return u"ok"_s;
    } catch (const List::Refusal &refusal) {
        return refusal.caseText();
    }
}

QByteArray text(const QJsonValue &list)
{
    return QJsonDocument(list.toObject()).toJson();
}

QJsonValue with(const QJsonValue &value, const QStringList &path, const QJsonValue &replacement)
{
    if (path.isEmpty())
        return replacement;
    if (value.isArray()) {
        QJsonArray array = value.toArray();
        array[path[0].toInt()] = with(array[path[0].toInt()], path.mid(1), replacement);
        return array;
    }
    QJsonObject object = value.toObject();
    object.insert(path[0], with(object.value(path[0]), path.mid(1), replacement));
    return object;
}

QJsonValue valueOf(const QString &words)
{
    const QStringList repeated = words.split(u" x "_s);
    if (repeated.size() == 2)
        return repeated[0].repeated(repeated[1].toInt());
    return words == u'-' ? QJsonValue(QJsonValue::Undefined)
                         : QJsonDocument::fromJson(u"[%1]"_s.arg(words).toUtf8())[0];
}

TEST(SignedMeasurementListTest, EachRuleHasItsRefusal)
{
    const QJsonObject good = Scenario().signedList();
    const auto outcome = [&](const QString &line) {
        const QStringList columns = line.split(u'\t');
        return judgement(text(with(good, columns[0].split(u'/'), valueOf(columns[1]))));
    };
    TestData::expect("attestation/list_rules.txt", outcome);
    EXPECT_EQ(judgement("[]"), u"notJSON"_s);
}

TEST(SignedMeasurementListTest, AListHasLimits)
{
    const QJsonObject good = Scenario().signedList();
    const QJsonValue entry = good["entries"_L1][0];
    QJsonArray entries;
    QJsonArray revoked;
    for (int i = 0; i < 128; ++i)
        entries.append(with(entry, {u"id"_s}, u"entry-%1"_s.arg(i)));
    for (int i = 0; i < 256; ++i)
        revoked.append(u"id-%1"_s.arg(i));
    const QJsonValue full = with(with(good, {u"entries"_s}, entries), {u"revoked"_s}, revoked);
    EXPECT_EQ(judgement(text(full)), u"ok"_s);
    entries.append(entry);
    revoked.append(u"id"_s);
    EXPECT_EQ(judgement(text(with(full, {u"entries"_s}, entries))), u"badValue(\"entries\")"_s);
    EXPECT_EQ(judgement(text(with(full, {u"revoked"_s}, revoked))), u"badValue(\"revoked\")"_s);
    EXPECT_EQ(judgement(text(with(good, {u"entries"_s}, QJsonArray{entry, entry}))),
              u"duplicateID(\"test.configuration\")"_s);
    EXPECT_EQ(judgement(text(good).leftJustified(524288)), u"ok"_s);
    EXPECT_EQ(judgement(text(good).leftJustified(524289)), u"tooLarge"_s);
}

TEST(SignedMeasurementListTest, AListAcceptsUntilItRunsOut)
{
    const Scenario scenario;
    const QJsonObject object = scenario.signedList();
    const auto list = List::read(text(object), 0);
    ASSERT_EQ(list.entries.size(), 1U);
    EXPECT_EQ(list.entries[0].stack, scenario.stack);

    VeniceMeasurementAllowlist bundled;
    bundled.stacksByModel[u"e2ee-built-in"_s] = {scenario.stack};
    EXPECT_EQ(list.allowlistAt(list.notAfter.addSecs(-1), bundled).stacks(u"e2ee-test-model"_s).size(), 1U);
    const auto expired = list.allowlistAt(list.notAfter, bundled);
    EXPECT_TRUE(expired.stacks(u"e2ee-test-model"_s).empty());
    EXPECT_EQ(expired.stacks(u"e2ee-built-in"_s).size(), 1U);

    const auto withdrawn = with(object, {u"revoked"_s}, QJsonArray{u"test.configuration"_s});
    EXPECT_TRUE(List::read(text(withdrawn), 0).allowlistAt(list.notAfter, bundled).stacksByModel.empty());
}

TEST(SignedMeasurementListTest, IsReadOnlyOnceItsSignatureHolds)
{
    const QByteArray list = text(Scenario().signedList());
    const ListKey first;
    const ListKey second;
    const QByteArray signature = second.signatureFile(list);
    const std::vector<QByteArray> keys{QByteArray("no key"), first.publicKey(), second.publicKey()};
    const auto floorOf = [&](const QByteArray &key) { return key == second.publicKey() ? 1 : 1000; };
    const auto outcome = [&](const QByteArray &bytes, const QByteArray &file, const auto &trusted,
                             const std::optional<QDateTime> &date = {}) {
        try {
            const List::Signed verified = List::verify(bytes, file, trusted, floorOf, date);
            return verified.key == second.publicKey() ? u"second"_s : u"first"_s;
        } catch (const List::Refusal &refusal) {
            return refusal.caseText();
        }
    };
    EXPECT_EQ(outcome(list, " \r\n" + signature, keys), u"second"_s);
    EXPECT_EQ(outcome(list, first.signatureFile(list), keys).left(10),
              u"rolledBack"_s); // each key has its floor
    EXPECT_EQ(outcome(list + ' ', signature, keys), u"signatureInvalid"_s);
    EXPECT_EQ(outcome("[]", signature, keys), u"signatureInvalid"_s);
    EXPECT_EQ(outcome(list, signature, std::vector{first.publicKey()}), u"signatureInvalid"_s);
    EXPECT_EQ(outcome(list, signature, std::vector<QByteArray>()), u"signatureInvalid"_s);
    for (const QByteArray &file : {QByteArray(), QByteArray("!"), signature.sliced(4), "AAAA" + signature})
        EXPECT_EQ(outcome(list, file, keys), u"signatureMalformed"_s);
    EXPECT_EQ(outcome(QByteArray(524289, ' '), "!", keys), u"tooLarge"_s);
    const QDateTime end = List::read(list, 0).notAfter;
    EXPECT_EQ(outcome(list, signature, keys, end.addSecs(-1)), u"second"_s);
    EXPECT_EQ(outcome(list, signature, keys, end), u"expired"_s);

    // RFC 8032, section 7.1, test 1.
    const QByteArray published =
        QByteArray::fromHex("d75a980182b10ab7d54bfed3c964073a0ee172f3daa62325af021a68f707511a");
    const QByteArray ofNothing =
        QByteArray::fromHex("e5564300c360ac729086e2cc806e828a84877f1eb8e5d974d873e065224901555fb8821590a33bac"
                            "c61e39701cf9b46bd25bf5f0595bbe24655141438e7a100b")
            .toBase64();
    EXPECT_EQ(ListSignature::signingKey("", ofNothing, {published}), published);
}

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

} // namespace

} // namespace morvane
