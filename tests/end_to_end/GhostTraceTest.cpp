#include "end_to_end/WatchedProcess.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(GhostTraceTest, NoWordOfAGhostChatReachesADiskBeforeItIsKeptNorAfterItIsDropped)
{
    WatchedProcess session(QStringLiteral(MORVANE_GHOST_SESSION), {u"--gtest_filter=*IsDroppedAndKept"_s});
    ASSERT_TRUE(session.reaches("begun"))
        << "A tracer has to be allowed here, or nothing is proven: " << session.printed().toStdString();
    const qsizetype writes = session.writesBelow("data");
    EXPECT_GT(writes, 0) << "the store was made, and seen to be";
    for (const char *stage : {"held", "dropped", "held again", "kept"}) {
        session.goOn();
        ASSERT_TRUE(session.reaches(stage)) << session.printed().toStdString();
        for (const char *mark : {"DroppedMARK", "KeptMARK"})
            EXPECT_EQ(session.leaksOf(mark).join(u'\n').toStdString(), "") << stage;
        const qsizetype now = session.writesBelow("data");
        if (stage != QByteArrayView("kept")) {
            EXPECT_EQ(now, writes) << stage << ": not even sealed";
        } else {
            EXPECT_GT(now, writes) << "sealed now";
        }
    }
    session.goOn();
    EXPECT_TRUE(session.ends()) << session.printed().toStdString();
    for (const char *mark : {"DroppedMARK", "KeptMARK"})
        EXPECT_EQ(session.leaksOf(mark).join(u'\n').toStdString(), "");
    EXPECT_EQ(session.writtenElsewhere().join(u'\n').toStdString(), "");
}

// What is said leaves no words and no sound, however a press ends.
TEST(GhostTraceTest, NothingOfWhatIsSaidInAGhostChatReachesADisk)
{
    WatchedProcess session(QStringLiteral(MORVANE_GHOST_SESSION), {u"--gtest_filter=*IsSpokenTo"_s});
    for (const char *stage :
         {"begun", "taken down", "dropped", "let go and left", "sent", "still speaking"}) {
        ASSERT_TRUE(session.reaches(stage)) << session.printed().toStdString();
        session.goOn();
    }
    EXPECT_TRUE(session.ends()) << session.printed().toStdString();
    EXPECT_GT(session.writesBelow("ai.morvane.macos"), 0) << "the log of voice, without words";
    for (const char *mark : {"brother in the morning", "SoundMARKSoundMARK"})
        EXPECT_EQ(session.leaksOf(mark).join(u'\n').toStdString(), "");
    EXPECT_EQ(session.writtenElsewhere().join(u'\n').toStdString(), "");
}

// The watch itself works: each of these is something that a program could do by mistake.
TEST(GhostTraceTest, EachWayInWhichWordsCouldLeakIsSeen)
{
    for (const auto &leak :
         {u"echo MARKEDwords >&2"_s, u"echo MARKEDwords > $TMPDIR/gone; rm $TMPDIR/gone"_s,
          u"printf 'M\\0A\\0R\\0K\\0E\\0D\\0w\\0o\\0r\\0d\\0s\\0' > $HOME/wide"_s,
          u"echo xMARKEDwords | base64 > $HOME/encoded"_s, u"(sleep 0; mkdir $HOME/MARKEDwords)"_s}) {
        WatchedProcess process(u"/bin/sh"_s, {u"-c"_s, leak});
        EXPECT_TRUE(process.ends());
        EXPECT_FALSE(process.leaksOf("MARKEDwords").isEmpty()) << leak.toStdString();
    }
    WatchedProcess quiet(u"/bin/sh"_s, {u"-c"_s, u"echo words > $HOME/file"_s});
    EXPECT_TRUE(quiet.ends());
    EXPECT_TRUE(quiet.leaksOf("MARKEDwords").isEmpty());
}

} // namespace

} // namespace morvane
