// The screen of a real X server with windows of known text, from its picture to the words.

#include "platform/linux/X11Picture.h"

#include "async/Work.h"
#include "platform/linux/OwnWindows.h"
#include "services/ScreenCapturing.h"
#include "services/ScreenTextRecognizer.h"
#include "support/Await.h"
#include "support/SamplePage.h"
#include "support/TestScreen.h"

#include <QGuiApplication>
#include <QRasterWindow>
#include <QScreen>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class X11PictureTest : public testing::Test {
protected:
    [[nodiscard]] QString read(const TestScreen &screen, qint64 without = 0, double pixelsPerPoint = 1)
    {
        const std::string display = screen.display().toStdString();
        const std::function<std::shared_ptr<const ScreenPicture>(std::stop_token)> taking =
            [=](const std::stop_token &stop) {
                return std::make_shared<const ScreenPicture>(
                    X11Picture::take(display.c_str(), without, pixelsPerPoint, stop));
            };
        auto picture = TestWait::await(work.run(taking));
        size = picture->size;
        ScreenTextRecognizer recognizer(work, clock, QStringLiteral(MORVANE_READ_SCREEN), {u"eng"_s});
        return ScreenText::of(TestWait::await(recognizer.recognize(std::move(picture), {})));
    }
    static double share(const QString &words, const QString &read)
    {
        return SamplePage::shareRead(words.split(u' '), read);
    }

    SystemClock clock;
    Work work{clock};
    QSize size;
};

const QString open = u"Seven bright engines carry water across the narrow valley"_s;
const QString covered = u"Nobody knows whether the evening train arrives before midnight"_s;
const QString own = u"Marigold private harbour words belong to this program alone"_s;

TEST_F(X11PictureTest, WhatLiesBehindAWindowOfOursIsReadAndNoWordOfOurs)
{
    TestScreen screen;
    ASSERT_FALSE(screen.display().isEmpty()) << "no Xvfb";
    screen.show({.place = {40, 30, 640, 120}, .text = open});
    const qint64 behind = screen.show(
        {.place = {300, 300, 700, 120}, .pixels = 13, .ink = "#d4d4d4", .paper = "#1e1e1e", .text = covered});
    const qint64 ours = screen.show({.place = {280, 280, 900, 300}, .pixels = 20, .text = own});
    const QString text = read(screen, ours);
    EXPECT_EQ(share(open, text), 1) << text.toStdString();
    EXPECT_EQ(share(covered, text), 1) << text.toStdString();
    EXPECT_FALSE(text.contains(u"Marigold"_s));
    EXPECT_EQ(size, QSize(1600, 900));
    const QString others = read(screen, behind);
    EXPECT_EQ(share(own, others), 1) << others.toStdString();
    EXPECT_FALSE(others.contains(u"midnight"_s)) << "covered, by another program's window";

    screen.show({.place = {0, 0, 1600, 900}, .paper = "#202020", .text = u""_s});
    EXPECT_EQ(read(screen, ours), QString()) << "something blank covers it all";
}

TEST_F(X11PictureTest, OnlyTheMainDisplayIsReadWhateverItsScale)
{
    TestScreen screen(u"2000x700"_s);
    ASSERT_FALSE(screen.display().isEmpty()) << "no Xvfb";
    screen.setDisplays({{0, 0, 900, 700}, {900, 100, 1100, 600}});
    screen.show({.place = {40, 200, 700, 120}, .text = own});
    // Half of it is on the other display.
    screen.show({.place = {700, 300, 500, 60}, .pixels = 13, .text = open, .scale = 1.5});
    const QString text = read(screen, 0, 1.5);
    EXPECT_EQ(size, QSize(1100, 600));
    EXPECT_GE(share(u"across the narrow valley"_s, text), 0.5) << text.toStdString();
    EXPECT_FALSE(text.contains(u"Marigold"_s)) << text.toStdString();
    EXPECT_FALSE(text.contains(u"Seven"_s)) << text.toStdString();
}

TEST_F(X11PictureTest, NoServerAndNoTimeAreErrors)
{
    EXPECT_THROW(std::ignore = X11Picture::take(":65000", 0, 1, {}), ScreenCaptureFailure);
}

TEST(OwnWindowsTest, AFullScreenWindowOfOursOnTheMainDisplayIsSeenAndAllAreHiddenAndComeBack)
{
    QRasterWindow window;
    QRasterWindow minimized;
    QRasterWindow never;
    window.show();
    minimized.showMinimized();
    TestWait::settle();
    EXPECT_FALSE(OwnWindows::fillMainDisplay());
    window.showFullScreen();
    TestWait::until([&] { return window.isExposed(); });
    EXPECT_TRUE(OwnWindows::fillMainDisplay());
    {
        const OwnWindows::Hidden hidden;
        EXPECT_TRUE(hidden.isNeeded());
        EXPECT_FALSE(window.isVisible());
        EXPECT_FALSE(OwnWindows::fillMainDisplay());
    }
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(window.windowStates().testFlag(Qt::WindowFullScreen));
    EXPECT_TRUE(minimized.windowStates().testFlag(Qt::WindowMinimized));
    EXPECT_FALSE(never.isVisible());
    window.setScreen(QGuiApplication::screens().last());
    window.setGeometry(QGuiApplication::screens().last()->geometry());
    TestWait::settle();
    EXPECT_FALSE(OwnWindows::fillMainDisplay()) << "on another display";
}

} // namespace

} // namespace morvane
