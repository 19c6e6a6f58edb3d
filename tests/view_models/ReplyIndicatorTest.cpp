#include "view_models/chat/ReplyIndicator.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Kind = ReplyIndicator::Signal::Kind;

const QDateTime start = QDateTime::fromString(u"2026-03-01T12:00:00Z"_s, Qt::ISODate);
const QDateTime later = start.addSecs(9);

TEST(ReplyIndicatorTest, FollowsItsTable)
{
    const ReplyIndicator::State thinking = ReplyIndicator::Thinking{start};
    const ReplyIndicator::State streaming = ReplyIndicator::Streaming{};
    const ReplyIndicator::State done = ReplyIndicator::Done{};
    const ReplyIndicator::State cancelled = ReplyIndicator::Cancelled{};
    const struct {
        std::vector<Kind> signals_; // from a fresh indicator; the last one leads to `after`
        ReplyIndicator::State after;
    } rows[] = {
        {{Kind::emptiedAgain}, ReplyIndicator::Dots{start}},
        {{Kind::thinking}, thinking},
        {{Kind::text}, streaming},
        {{Kind::finished}, done},
        {{Kind::failed}, done},
        {{Kind::cancelled}, cancelled},
        {{Kind::thinking, Kind::thinking}, thinking},
        {{Kind::thinking, Kind::emptiedAgain}, thinking},
        {{Kind::thinking, Kind::text}, streaming},
        {{Kind::text, Kind::thinking}, streaming},
        {{Kind::text, Kind::emptiedAgain}, ReplyIndicator::Dots{later}},
        {{Kind::finished, Kind::text}, done},
        {{Kind::cancelled, Kind::finished}, cancelled},
    };
    for (const auto &row : rows) {
        ReplyIndicator indicator(start);
        for (const Kind kind : row.signals_) {
            const auto before = indicator.state();
            const bool hasChanged = indicator.apply({kind, later});
            EXPECT_EQ(hasChanged, before != indicator.state());
        }
        EXPECT_EQ(indicator.state(), row.after);
    }
}

TEST(ReplyIndicatorTest, SaysHowFarItIs)
{
    const std::tuple<int, QString, QString> rows[] = {
        // seconds, beside the dots, while it thinks
        {-3, u""_s, u"Thinking…"_s},
        {0, u""_s, u"Thinking…"_s},
        {1, u""_s, u"Thinking… 1s"_s},
        {4, u""_s, u"Thinking… 4s"_s},
        {5, u"Working on it 5s"_s, u"Thinking… 5s"_s},
        {14, u"Thinking it through 14s"_s, u"Thinking… 14s"_s},
        {24, u"Putting it together 24s"_s, u"Thinking… 24s"_s},
        {100, u"Still thinking, bigger question than it looked 100s"_s, u"Thinking… 100s"_s},
    };
    for (const auto &[seconds, dots, thinking] : rows) {
        ReplyIndicator indicator(start);
        const QDateTime now = start.addSecs(seconds);
        EXPECT_EQ(indicator.label(now), dots);
        indicator.apply({Kind::thinking});
        EXPECT_EQ(indicator.label(now), thinking);
        indicator.apply({Kind::text});
        EXPECT_EQ(indicator.label(now), QString());
    }
}

} // namespace

} // namespace morvane
