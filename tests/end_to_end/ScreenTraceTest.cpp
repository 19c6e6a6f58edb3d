#include "end_to_end/WatchedProcess.h"
#include "support/TestScreen.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace morvane {

namespace {

// What stands on the person's screen reaches their chat, and no disk, log or other program.
TEST(ScreenTraceTest, WhatIsReadOfTheScreenIsShownSentNearbyAndLeavesNoTrace)
{
    for (const bool isTraced : {false, true}) {
        TestScreen screen(u"1920x1080"_s);
        ASSERT_FALSE(screen.display().isEmpty()) << "no Xvfb";
        screen.show(
            {.place = {0, 0, 1900, 1060},
             .pixels = 15,
             .ink = "#d8d8d8",
             .paper = "#1e1e2e",
             .text = u"The minutes of the MarigoldHarbour council say that seven engines carry water"_s});
        WatchedProcess session(QStringLiteral(MORVANE_SCREEN_SESSION), {},
                               {{u"DISPLAY"_s, screen.display()},
                                {u"QT_QPA_PLATFORM"_s, u"xcb"_s},
                                {u"MORVANE_TEST_DISPLAY"_s, u"yes"_s}},
                               isTraced ? WatchedProcess::Trace::yes : WatchedProcess::Trace::no);
        for (const char *stage : {"begun", "shown", "sent", "over"}) {
            ASSERT_TRUE(session.reaches(stage)) << session.printed().toStdString();
            if (isTraced) {
                EXPECT_EQ(session.leaksOf("MarigoldHarbour").join(u'\n').toStdString(), "") << stage;
            }
            session.goOn();
        }
        EXPECT_TRUE(session.ends()) << session.printed().toStdString();
        static const QRegularExpression block(u"longest block ([0-9.]+)"_s);
        const double milliseconds = block.match(QString::fromUtf8(session.printed())).captured(1).toDouble();
        if (!isTraced) {
            std::printf("longest block of the GUI thread while the screen was read: %.2f ms\n", milliseconds);
            EXPECT_GT(milliseconds, 0);
            EXPECT_LT(milliseconds, 16);
        } else {
            EXPECT_EQ(session.leaksOf("MarigoldHarbour").join(u'\n').toStdString(), "");
            EXPECT_GT(session.traced(), 100);
            EXPECT_EQ(session.writtenElsewhere().join(u'\n').toStdString(), "");
        }
    }
}

} // namespace

} // namespace morvane
