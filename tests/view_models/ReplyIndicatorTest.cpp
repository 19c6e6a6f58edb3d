#include "view_models/chat/ReplyIndicator.h"

#include "support/TestData.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Kind = ReplyIndicator::Signal::Kind;

const QDateTime start = QDateTime::fromString(u"2026-03-01T12:00:00Z"_s, Qt::ISODate);
const QDateTime later = start.addSecs(9);

TEST(ReplyIndicatorTest, FollowsItsTable)
{
    const QByteArrayList signals_{"emptied", "thinking", "text", "finished", "cancelled", "failed"};
    const ReplyIndicator::State states[] = {ReplyIndicator::Dots{start},     ReplyIndicator::Dots{later},
                                            ReplyIndicator::Thinking{start}, ReplyIndicator::Streaming{},
                                            ReplyIndicator::Done{},          ReplyIndicator::Cancelled{}};
    const QStringList names{u"dots"_s,      u"new dots"_s, u"thinking"_s,
                            u"streaming"_s, u"done"_s,     u"cancelled"_s};
    const char *table = "view_models/indicator_signals.txt";
    const auto outcome = [&](const QByteArray &line) {
        ReplyIndicator indicator(start);
        for (const QByteArray &signal : line.split(' ')) {
            const auto before = indicator.state();
            const bool hasChanged = indicator.apply({Kind(signals_.indexOf(signal)), later});
            EXPECT_EQ(hasChanged, before != indicator.state());
        }
        return names.value(std::ranges::find(states, indicator.state()) - std::begin(states));
    };
    EXPECT_EQ(TestData::transcript(table, outcome), TestData::text(table));
}

TEST(ReplyIndicatorTest, SaysHowFarItIs)
{
    const char *table = "view_models/working_lines.txt";
    const auto outcome = [](const QByteArray &seconds) {
        ReplyIndicator indicator(start);
        const QDateTime now = start.addSecs(seconds.toInt());
        const QString dots = indicator.label(now);
        indicator.apply({Kind::thinking});
        const QString thinking = indicator.label(now);
        indicator.apply({Kind::text});
        EXPECT_EQ(indicator.label(now), QString());
        return dots + u'|' + thinking;
    };
    EXPECT_EQ(TestData::transcript(table, outcome), TestData::text(table));
}

} // namespace

} // namespace morvane
