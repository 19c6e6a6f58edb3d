#include "view_models/companion/CompanionViewModel.h"

#include "support/ManualClock.h"

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
