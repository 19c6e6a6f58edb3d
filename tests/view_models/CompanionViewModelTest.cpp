#include "view_models/companion/CompanionViewModel.h"

#include "support/ManualClock.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using enum Companion::State;

TEST(CompanionViewModelTest, WhatLastsAWhileGetsItsOwnTimeAndEndsNothingElse)
{
    ManualClock clock;
    CompanionViewModel companion{clock};
    companion.say(u"one"_s, 2s);
    companion.flash(error, 2s);
    clock.advance(1s);
    companion.say(u"two"_s, 2s);
    companion.flash(error, 2s);
    clock.advance(1s);
    EXPECT_EQ(companion.bubbleText(), u"two"_s);
    EXPECT_EQ(companion.state(), error);
    clock.advance(1s);
    EXPECT_EQ(companion.bubbleText(), QString());
    EXPECT_EQ(companion.state(), idle);

    companion.flash(notification, 2s);
    companion.transition(listening);
    clock.advance(5s);
    EXPECT_EQ(companion.state(), listening);
    companion.flash(notification, 2s);
    EXPECT_EQ(companion.state(), listening) << "refused";
}

} // namespace

} // namespace morvane
