#include "attestation/VeniceMeasurementListAnchor.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Anchor = VeniceMeasurementListAnchor;

TEST(ListAnchor, RemembersEachKeyForItselfAndForgetsNoWithdrawal)
{
    const QByteArray one(32, '1');
    const QByteArray two(32, '2');
    const Anchor first = Anchor().after(one, {7, u"aa"_s}, {u"withdrawn.first"_s});
    const Anchor second = first.after(two, {3, u"bb"_s}, {});
    EXPECT_EQ(second.floorOf(one), 7);
    EXPECT_EQ(second.floorOf(two), 3);
    EXPECT_EQ(first.floorOf(two), 0);
    EXPECT_EQ(second.after(one, {8, u"cc"_s}, {u"withdrawn.later"_s}).revoked,
              (std::set{u"withdrawn.first"_s, u"withdrawn.later"_s}));
    EXPECT_EQ(Anchor::read(second.json()), second);
    EXPECT_EQ(Anchor::read(Anchor().json()), Anchor());
}

TEST(ListAnchor, IsUnreadableUnlessAllOfItHolds)
{
    const QString good =
        uR"({"marks":{"MTExMTExMTExMTExMTExMTExMTExMTExMTExMTExMTE=":{"version":7,"sha256":"aa"}},"revoked":["a"]})"_s;
    ASSERT_TRUE(Anchor::read(good));
    const std::pair<QString, QString> breaches[] = {
        {u"7"_s, u"0"_s},          {u"7"_s, u"7.5"_s},      {u"7"_s, u"\"7\""_s},
        {u"MTEx"_s, u"MT"_s},      {u"\"aa\""_s, u"1"_s},   {u"[\"a\"]"_s, u"[\"A\"]"_s},
        {u"[\"a\"]"_s, u"[1]"_s},  {u"[\"a\"]"_s, u"{}"_s}, {u"\"sha256\""_s, u"\"sha\""_s},
        {u"revoked"_s, u"gone"_s}, {u"}},"_s, u"}}},"_s},   {good, u"[]"_s},
        {good, QString()}};
    for (const auto &[before, after] : breaches)
        EXPECT_FALSE(Anchor::read(QString(good).replace(before, after))) << after.toStdString();
}

} // namespace

} // namespace morvane
