#include "attestation/evidence/VeniceSignedMeasurementList.h"
#include "support/evidence/TestAuthority.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using List = VeniceSignedMeasurementList;

QString readFailure(const QByteArray &json, std::int64_t floor)
{
    try {
        (void)List::read(json, floor);
        return u"ok"_s;
    } catch (const List::Refusal &refusal) {
        return refusal.caseText();
    }
}

QByteArray text(const QJsonObject &object)
{
    return QJsonDocument(object).toJson();
}

// Changes one member, where `path` names objects and the first elements of arrays from the top down.
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
    if (replacement.isUndefined() && path.size() == 1)
        object.remove(path[0]);
    else
        object[path[0]] = with(object[path[0]], path.mid(1), replacement);
    return object;
}

} // namespace

TEST(SignedMeasurementListTest, EachRuleHasItsRefusal)
{
    const QJsonValue absent(QJsonValue::Undefined);
    const QJsonValue live(QJsonValue::Null);
    const Scenario scenario;
    const QJsonObject good = scenario.signedList();
    const QJsonObject entry = good["entries"_L1][0].toObject();
    QJsonArray manyEntries;
    QJsonArray manyRevoked;
    for (int i = 0; i < 257; ++i) {
        if (i < 129)
            manyEntries.append(with(entry, {u"id"_s}, u"entry-%1"_s.arg(i)));
        manyRevoked.append(u"id-%1"_s.arg(i));
    }
    const QJsonObject plainEvent{{u"name"_s, u"a"_s}, {u"payload"_s, u""_s}};

    const struct {
        QString path;
        QJsonValue value;
        QString refusal;
    } rows[] = {
        {u"formatVersion"_s, 2, u"unknownFormat"_s},
        {u"formatVersion"_s, absent, u"unknownFormat"_s},
        {u"note"_s, 1, u"unknownField(\"list.note\")"_s},
        {u"revoked"_s, absent, u"missingField(\"list.revoked\")"_s},
        {u"listVersion"_s, 0, u"badValue(\"listVersion\")"_s},
        {u"listVersion"_s, 3.5, u"badValue(\"listVersion\")"_s},
        {u"listVersion"_s, u"3"_s, u"badValue(\"listVersion\")"_s},
        {u"listVersion"_s, 1, u"rolledBack(1, 2)"_s},
        {u"issuedAt"_s, u"2026-08-01 00:00:00Z"_s, u"badValue(\"issuedAt\")"_s},
        {u"issuedAt"_s, u"2026-02-30T00:00:00Z"_s, u"badValue(\"issuedAt\")"_s},
        {u"issuedAt"_s, u"2026-08-01T00:00:00+"_s, u"badValue(\"issuedAt\")"_s},
        {u"notAfter"_s, u"2026-08-01T00:00:00Z"_s, u"badValue(\"notAfter\")"_s},
        {u"entries"_s, manyEntries, u"badValue(\"entries\")"_s},
        {u"entries"_s, QJsonArray{1}, u"badValue(\"entries\")"_s},
        {u"entries"_s, QJsonArray{entry, entry}, u"duplicateID(\"test.configuration\")"_s},
        {u"revoked"_s, manyRevoked, u"badValue(\"revoked\")"_s},
        {u"revoked"_s, QJsonArray{u"-a"_s}, u"badValue(\"revoked\")"_s},
        {u"revoked"_s, QJsonArray{u"a"_s, u"a"_s}, u"duplicateID(\"a\")"_s},
        {u"entries/0/requiresGPUEvidence"_s, false, u"unknownField(\"entry.requiresGPUEvidence\")"_s},
        {u"entries/0/rtmr2"_s, absent, u"missingField(\"entry.rtmr2\")"_s},
        {u"entries/0/id"_s, u"Test"_s, u"badValue(\"id\")"_s},
        {u"entries/0/id"_s, QString(97, u'a'), u"badValue(\"id\")"_s},
        {u"entries/0/model"_s, u"e2ee-"_s, u"badValue(\"model\")"_s},
        {u"entries/0/model"_s, u"test-model"_s, u"badValue(\"model\")"_s},
        {u"entries/0/stackLabel"_s, u""_s, u"badValue(\"stackLabel\")"_s},
        {u"entries/0/stackLabel"_s, u"a\u007f"_s, u"badValue(\"stackLabel\")"_s},
        {u"entries/0/stackLabel"_s, QString(121, u'é'), u"badValue(\"stackLabel\")"_s},
        {u"entries/0/mrtd"_s, QString(96, u'A'), u"badValue(\"mrtd\")"_s},
        {u"entries/0/rtmr0"_s, QString(94, u'a'), u"badValue(\"rtmr0\")"_s},
        {u"entries/0/configuration"_s, 1, u"badValue(\"configuration\")"_s},
        {u"entries/0/configuration/id"_s, u"a"_s, u"unknownField(\"configuration.id\")"_s},
        {u"entries/0/configuration/prefixLength"_s, 0, u"badValue(\"prefixLength\")"_s},
        {u"entries/0/configuration/suffixLength"_s, 1048577, u"badValue(\"suffixLength\")"_s},
        {u"entries/0/configuration/suffixSHA256"_s, QString(63, u'a'), u"badValue(\"suffixSHA256\")"_s},
        {u"entries/0/bootEvents"_s, QJsonArray{}, u"badValue(\"bootEvents\")"_s},
        {u"entries/0/bootEvents"_s, QJsonArray{plainEvent, plainEvent}, u"badValue(\"bootEvents\")"_s},
        {u"entries/0/bootEvents/0/digest"_s, 1, u"unknownField(\"boot event.digest\")"_s},
        {u"entries/0/bootEvents/0/payload"_s, absent, u"missingField(\"boot event.payload\")"_s},
        {u"entries/0/bootEvents/0/payload"_s, live, u"badValue(\"bootEvents\")"_s},
        {u"entries/0/bootEvents/0/payload"_s, u"abc"_s, u"badValue(\"bootEvents\")"_s},
        {u"entries/0/bootEvents/0/payload"_s, u"AB"_s, u"badValue(\"bootEvents\")"_s},
        {u"entries/0/bootEvents/0/payload"_s, QString(4098, u'a'), u"badValue(\"bootEvents\")"_s},
        {u"entries/0/bootEvents/0/name"_s, u"a:b"_s, u"badValue(\"bootEvents\")"_s},
        {u"entries/0/bootEvents/0/name"_s, u"compose-hash"_s, u"badValue(\"bootEvents\")"_s},
        {u"entries/0/bootEvents/2/payload"_s, u""_s, u"badValue(\"bootEvents\")"_s},
        {u"entries/0/stackLabel"_s, QString(120, u'é'), u"ok"_s},
        {u"entries/0/bootEvents/0/payload"_s, QString(4096, u'a'), u"ok"_s},
        {u"listVersion"_s, 2, u"ok"_s},
    };
    for (const auto &row : rows) {
        const auto changed = with(good, row.path.split(u'/'), row.value).toObject();
        EXPECT_EQ(readFailure(text(changed), 2), row.refusal) << row.path.toStdString();
    }
    EXPECT_EQ(readFailure("[]", 0), u"notJSON"_s);
    EXPECT_EQ(readFailure(QByteArray(524289, ' '), 0), u"tooLarge"_s);
    const QByteArray padded = text(good);
    EXPECT_EQ(readFailure(padded + QByteArray(524288 - padded.size(), ' '), 0), u"ok"_s);
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
    const auto current = list.allowlistAt(list.notAfter.addSecs(-1), bundled);
    EXPECT_EQ(current.stacks(u"e2ee-test-model"_s).size(), 1U);
    EXPECT_TRUE(current.source.text().startsWith(u"Version 3, signed by"_s));
    const auto expired = list.allowlistAt(list.notAfter, bundled);
    EXPECT_TRUE(expired.stacks(u"e2ee-test-model"_s).empty());
    EXPECT_EQ(expired.stacks(u"e2ee-built-in"_s).size(), 1U);
    EXPECT_TRUE(expired.source.text().startsWith(u"Version 3 expired on December 1, 2026."_s));

    const auto withdrawn = with(object, {u"revoked"_s}, QJsonArray{u"test.configuration"_s}).toObject();
    EXPECT_TRUE(List::read(text(withdrawn), 0).allowlistAt(list.notAfter, bundled).stacksByModel.empty());
}

} // namespace morvane
