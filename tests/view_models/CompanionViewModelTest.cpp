#include "view_models/companion/CompanionViewModel.h"

#include "support/ManualClock.h"
#include "support/TestData.h"

#include <QMetaEnum>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using enum Companion::State;

class CompanionViewModelTest : public testing::Test {
protected:
    ManualClock clock;
    CompanionViewModel companion{clock};
};

TEST_F(CompanionViewModelTest, RefusesTheMovesThatAreNotInTheTable)
{
    const auto states = QMetaEnum::fromType<CompanionState>();
    const char *table = "view_models/companion_moves.txt";
    const auto outcome = [&states](const QByteArray &from) {
        const int origin = states.keyToValue(from.constData());
        QStringList allowed;
        for (int to = 0; to < states.keyCount(); ++to) {
            if (Companion::mayMove(CompanionState(origin), CompanionState(to)))
                allowed.append(QString::fromLatin1(states.key(to)));
        }
        return allowed.join(u' ');
    };
    EXPECT_EQ(TestData::transcript(table, outcome), TestData::text(table));
}

TEST_F(CompanionViewModelTest, AFlashEndsInIdleUnlessTheStateChangedMeanwhile)
{
    companion.flash(error, 2s);
    clock.advance(1s);
    companion.flash(error, 2s);
    clock.advance(1s);
    EXPECT_EQ(companion.state(), error) << "the second flash got its own time";
    clock.advance(1s);
    EXPECT_EQ(companion.state(), idle);

    companion.flash(notification, 2s);
    companion.transition(listening);
    clock.advance(5s);
    EXPECT_EQ(companion.state(), listening);
    companion.flash(notification, 2s);
    EXPECT_EQ(companion.state(), listening) << "refused";

    companion.reset();
    companion.flash(notification, 2s);
    companion.flash(error, 2s); // refused, and it still ends what was to end the first
    clock.advance(5s);
    EXPECT_EQ(companion.state(), notification);
}

TEST_F(CompanionViewModelTest, ThePointerLeavesEveryStateButItsOwnAsItIs)
{
    for (const CompanionState state : {listening, thinking, speaking, notification, error}) {
        companion.reset();
        companion.transition(state);
        companion.setHovering(true);
        EXPECT_EQ(companion.state(), state);
        companion.setHovering(false);
        EXPECT_EQ(companion.state(), state);
    }
    companion.reset();
    companion.setHovering(true);
    EXPECT_EQ(companion.state(), hover);
    companion.setHovering(false);
    EXPECT_EQ(companion.state(), idle);
}

TEST_F(CompanionViewModelTest, ASecondBubbleGetsItsOwnFullTime)
{
    companion.say(u"one"_s, 3s);
    clock.advance(2s);
    companion.say(u"two"_s, 3s);
    clock.advance(2s);
    EXPECT_EQ(companion.bubbleText(), u"two"_s);
    clock.advance(1s);
    EXPECT_EQ(companion.bubbleText(), QString());
}

} // namespace

} // namespace morvane
