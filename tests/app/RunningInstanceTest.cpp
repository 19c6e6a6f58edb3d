#include "app/RunningInstance.h"

#include "support/Await.h"

#include <QFile>
#include <QSysInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <optional>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(RunningInstanceTest, ASecondStartAsksTheFirstToShowEveryTime)
{
    const QTemporaryDir folder;
    RunningInstance first(folder.filePath(u"run"_s));
    ASSERT_TRUE(first.isFirst());
    std::vector<AppRequest> asked;
    QObject::connect(&first, &RunningInstance::asked, [&](const AppRequest &each) { asked.push_back(each); });
    const AppRequest handed[] = {
        {},
        {.files = {u"/a b.txt"_s, u"/line\nend “ä”.pdf"_s}},
        {.showsWindow = false},
        {.chat = AppRequest::Chat::ghost, .files = QStringList(50, u"/"_s + QString(999, u'x'))},
        {.chat = AppRequest::Chat::fresh, .words = QString(20'000, u'ä'), .sends = true},
        {.chatID = u"1F"_s, .activationToken = u"1F_TIME77"_s}};
    for (const AppRequest &each : handed) {
        const RunningInstance second(folder.filePath(u"run"_s));
        EXPECT_FALSE(second.isFirst());
        asked.clear();
        EXPECT_TRUE(second.askFirst(each));
        TestWait::until([&] { return !asked.empty(); });
        EXPECT_EQ(asked, std::vector{each});
    }
    EXPECT_TRUE(RunningInstance(folder.filePath(u"other profile"_s)).isFirst());
}

TEST(RequestMessageTest, ASenderThatWasKilledOrIsHostileSpoilsNoOther)
{
    const AppRequest good{.chat = AppRequest::Chat::fresh, .words = u"words"_s};
    const QByteArray whole = RequestMessage::of({.files = {u"/a"_s}, .words = u"b"_s, .sends = true});
    std::vector<QByteArray> before{QByteArray(RequestMessage::largest + 1, 'f'),
                                   QByteArray("\0^\0", 3) + QByteArray(RequestMessage::largest, 'w'),
                                   QByteArray(".\0.\0?\0", 6)};
    for (qsizetype length = 0; length + 1 < whole.size(); ++length)
        before.push_back(whole.first(length));
    for (const QByteArray &each : before) {
        RequestMessage message;
        EXPECT_TRUE(message.read(each).empty()) << each.size();
        EXPECT_EQ(message.read(RequestMessage::of(good)), std::vector{good}) << each.size();
    }
}

TEST(RunningInstanceTest, TheEndOfTheFirstMakesRoomAndADeadOwnersLockCountsAsNone)
{
    const QTemporaryDir folder;
    {
        std::optional<RunningInstance> ending(std::in_place, folder.path());
        RunningInstance next(folder.path());
        ending->leave();
        EXPECT_FALSE(next.askFirst({})) << "nobody would carry it out";
        ending.reset();
        EXPECT_TRUE(next.follow() && next.isFirst());
        EXPECT_TRUE(RunningInstance(folder.path()).askFirst({})) << "it listens";
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
