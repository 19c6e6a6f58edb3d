#include "app/RunningInstance.h"

#include "support/Await.h"

#include <QFile>
#include <QSysInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(RunningInstanceTest, ASecondStartAsksTheFirstToShowEveryTime)
{
    const QTemporaryDir folder;
    RunningInstance first(folder.filePath(u"run"_s));
    ASSERT_TRUE(first.isFirst());
    int shown = 0;
    QObject::connect(&first, &RunningInstance::showRequested, [&] { ++shown; });
    for (int round = 1; round <= 3; ++round) {
        const RunningInstance second(folder.filePath(u"run"_s));
        EXPECT_FALSE(second.isFirst());
        second.askFirstToShow();
        TestWait::until([&] { return shown >= round; });
    }
    EXPECT_TRUE(RunningInstance(folder.filePath(u"other profile"_s)).isFirst());
}

TEST(RunningInstanceTest, TheEndOfTheFirstMakesRoomAndADeadOwnersLockCountsAsNone)
{
    const QTemporaryDir folder;
    {
        const RunningInstance ended(folder.path());
    }
    EXPECT_TRUE(RunningInstance(folder.path()).isFirst());

    // What a killed program leaves: a lock file naming a process that is gone.
    QFile lock(folder.filePath(u"morvane.lock"_s));
    ASSERT_TRUE(lock.open(QIODevice::WriteOnly));
    lock.write("2147483646\nmorvane\n" + QSysInfo::machineHostName().toUtf8() + '\n');
    lock.close();
    EXPECT_TRUE(RunningInstance(folder.path()).isFirst());
}

} // namespace

} // namespace morvane
