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
    qsizetype shown = 0;
    QStringList files;
    QObject::connect(&first, &RunningInstance::asked, [&](const QStringList &each) {
        ++shown;
        files += each;
    });
    const QStringList handed[] = {
        {}, {u"/a b.txt"_s, u"/line\nend “ä”.pdf"_s}, {}, QStringList(50, u"/"_s + QString(999, u'x'))};
    for (const QStringList &each : handed) {
        const RunningInstance second(folder.filePath(u"run"_s));
        EXPECT_FALSE(second.isFirst());
        files.clear();
        const qsizetype before = shown;
        second.askFirst(each);
        TestWait::until([&] { return shown > before && files.size() >= each.size(); });
        EXPECT_EQ(files, each);
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
