#include "StoreFixture.h"
#include "StoreWriterText.h"

#include <QProcess>

#include <chrono>
#include <map>
#include <random>
#include <set>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

struct Saved {
    QUuid conversation;
    int version = 0;
};

class StoreCrashTest : public StoreFixture, public testing::WithParamInterface<unsigned> {
protected:
    // Takes in the next report of a writer; false at the end.
    bool note(QProcess &writer)
    {
        while (!writer.canReadLine() && writer.waitForReadyRead()) {
        }
        if (!writer.canReadLine())
            return false;
        const QStringList words = QString::fromLatin1(writer.readLine()).trimmed().split(u' ');
        const QUuid conversation = QUuid::fromString(words.value(1));
        if (words.constFirst() == u"saved"_s)
            saved[QUuid::fromString(words.value(2))] = {conversation, words.value(3).toInt()};
        else
            removing.insert(conversation);
        return true;
    }

    // Lets a writer run for some reports and a moment longer, kills it, and reads what it still said.
    void runAndKill()
    {
        using Clock = std::chrono::steady_clock;
        QProcess writer;
        writer.start(QStringLiteral(STORE_WRITER), {profile->path(), QString::number(random() % 1000)});
        for (auto reports = random() % 12; reports > 0; --reports)
            note(writer);
        const auto end = Clock::now() + std::chrono::microseconds(random() % 3000);
        while (Clock::now() < end) {
        }
        writer.kill();
        ASSERT_TRUE(writer.waitForFinished(-1));
        ASSERT_EQ(writer.exitStatus(), QProcess::CrashExit);
        while (note(writer)) {
        }
    }

    void expectWhole()
    {
        auto session = onDisk();
        std::map<QUuid, int> versions;
        for (const auto &chat : session.repository.all()) {
            EXPECT_TRUE(chat->title() == Conversation::untitled() ||
                        StoreWriterText::versionOf(chat->title()));
            for (const auto &message : chat->messages()) {
                const auto version = StoreWriterText::versionOf(message->content());
                ASSERT_TRUE(version) << "half-written";
                EXPECT_TRUE(fromRawText<MessageStatus>(message->statusRaw()));
                versions[message->id()] = *version;
            }
        }
        EXPECT_EQ(session.context().count<ChatMessage>(), std::ssize(versions))
            << "messages without a conversation";
        for (const auto &[id, last] : saved) {
            if (!removing.contains(last.conversation)) {
                EXPECT_GE(versions[id], last.version) << "a saved text is lost";
            }
        }
    }

    std::optional<QTemporaryDir> profile;
    std::mt19937 random{GetParam()};
    std::map<QUuid, Saved> saved; // by message
    std::set<QUuid> removing;     // conversations
};

// 220 kills in all. A new profile now and then, so that some are killed while they make their store.
TEST_P(StoreCrashTest, AKilledProcessLeavesAWholeStore)
{
    std::size_t seen = 0;
    for (int profiles = 0; profiles < 5; ++profiles) {
        profile.emplace();
        folders = SupportFolders::inProfile(profile->path());
        saved.clear();
        for (int rounds = 0; rounds < 11; ++rounds) {
            runAndKill();
            expectWhole();
            if (HasFailure())
                return;
        }
        seen += saved.size();
    }
    EXPECT_GT(seen, 50U); // it was killed while it worked, not before
}

INSTANTIATE_TEST_SUITE_P(Seeds, StoreCrashTest, testing::Range(1U, 5U));

} // namespace

} // namespace morvane
