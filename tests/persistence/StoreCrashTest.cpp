#include "StoreWriterText.h"
#include "persistence/ConversationRepository.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/PersistenceController.h"
#include "support/FakeFieldSealing.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <map>
#include <random>
#include <set>
#include <sys/wait.h>
#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// A process that writes chats into a profile and reports on a pipe.
class Writer {
public:
    Writer(const QString &profile, unsigned seed)
    {
        int ends[2];
        if (::pipe(ends) != 0)
            throw std::runtime_error("no pipe");
        const QByteArray folder = profile.toLocal8Bit();
        const QByteArray number = QByteArray::number(seed);
        m_process = ::fork();
        if (m_process == 0) {
            ::dup2(ends[1], STDOUT_FILENO);
            ::close(ends[0]);
            ::execl(STORE_WRITER, STORE_WRITER, folder.constData(), number.constData(), nullptr);
            ::_exit(127);
        }
        ::close(ends[1]);
        m_reports = ::fdopen(ends[0], "r");
    }

    ~Writer() { ::fclose(m_reports); }
    Writer(const Writer &) = delete;
    Writer &operator=(const Writer &) = delete;

    // The next report; empty at the end.
    [[nodiscard]] QString next()
    {
        char line[256];
        return std::fgets(line, sizeof line, m_reports) ? QString::fromLatin1(line).trimmed() : QString();
    }

    // The signal that ended it.
    int kill()
    {
        ::kill(m_process, SIGKILL);
        int status = 0;
        ::waitpid(m_process, &status, 0);
        return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    }

private:
    pid_t m_process = 0;
    std::FILE *m_reports = nullptr;
};

struct Saved {
    QUuid conversation;
    int version = 0;
};

class StoreCrashTest : public testing::TestWithParam<unsigned> {
protected:
    void note(const QString &report)
    {
        const QStringList words = report.split(u' ');
        const QUuid conversation = QUuid::fromString(words.value(1));
        if (words.constFirst() == u"saved"_s)
            saved[QUuid::fromString(words.value(2))] = {conversation, words.value(3).toInt()};
        else
            removing.insert(conversation);
    }

    // Lets a writer run for some reports and a moment longer, kills it, and reads what it still said.
    void runAndKill(const QString &profile)
    {
        using Clock = std::chrono::steady_clock;
        Writer writer(profile, static_cast<unsigned>(random()));
        for (auto reports = random() % 12; reports > 0; --reports)
            note(writer.next());
        const auto end = Clock::now() + std::chrono::microseconds(random() % 3000);
        while (Clock::now() < end) {
        }
        ASSERT_EQ(writer.kill(), SIGKILL);
        for (QString report = writer.next(); !report.isEmpty(); report = writer.next())
            note(report);
    }

    void expectWhole(const QString &profile)
    {
        const auto persistence = PersistenceController::onDisk(
            {SupportFolders::inProfile(profile), defaults, [] { return false; }}, sealing);
        auto &context = persistence->mainContext();
        std::map<QUuid, int> versions;
        for (const auto &chat : context.fetch<Conversation>()) {
            EXPECT_TRUE(chat->title() == Conversation::untitled() ||
                        StoreWriterText::versionOf(chat->title()));
            for (const auto &message : chat->messages()) {
                const auto version = StoreWriterText::versionOf(message->content());
                ASSERT_TRUE(version) << "half-written";
                EXPECT_TRUE(fromRawText<MessageStatus>(message->statusRaw()));
                versions[message->id()] = *version;
            }
        }
        EXPECT_EQ(context.count<ChatMessage>(), std::ssize(versions)) << "messages without a conversation";
        for (const auto &[id, last] : saved) {
            if (!removing.contains(last.conversation)) {
                EXPECT_GE(versions[id], last.version) << "a saved text is lost";
            }
        }
    }

    InMemorySettingsRepository defaults;
    std::shared_ptr<FakeFieldSealing> sealing = std::make_shared<FakeFieldSealing>();
    std::mt19937 random{GetParam()};
    std::map<QUuid, Saved> saved; // by message
    std::set<QUuid> removing;     // conversations
};

// 220 kills in all. A new profile now and then, so that some are killed while they make their store.
TEST_P(StoreCrashTest, AKilledProcessLeavesAWholeStore)
{
    std::size_t seen = 0;
    for (int profiles = 0; profiles < 5; ++profiles) {
        const QTemporaryDir profile;
        saved.clear();
        for (int rounds = 0; rounds < 11; ++rounds) {
            runAndKill(profile.path());
            expectWhole(profile.path());
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
