#include <QGuiApplication>

#include <gtest/gtest.h>

// Tests of every room run inside an application object: streams and timers need its event loop.
int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen"); // no test may need or touch a display
    QGuiApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
