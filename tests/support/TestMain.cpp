#include <QGuiApplication>

#include <gtest/gtest.h>

// Tests of every room run inside an application object: streams and timers need its event loop.
int main(int argc, char **argv)
{
    // No test may need or touch a display but one that it started. Of the two screens the first has room for
    // any window.
    if (!qEnvironmentVariableIsSet("MORVANE_TEST_DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" MORVANE_SCREENS);
    QGuiApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
