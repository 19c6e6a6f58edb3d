#include "StoreFixture.h"
#include "support/FileSpy.h"

#include <QDir>

#include <csignal>
#include <new>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// What a conversation holds after so many saves: each of its replies is saved when it begins and when it
// ends.
QStringList textsAfter(int saves)
{
    QStringList texts;
    for (int save = 0; save < saves; save += 2)
        texts += QString(save + 1 < saves ? 9000 : 700, QChar(u'a' + save));
    return texts;
}

class StoreCrashTest : public StoreFixture {
protected:
    ~StoreCrashTest() override { ::munmap(saves, sizeof *saves); }

    // Writes chats as turns do, and counts what has been saved.
    void write() noexcept
    {
        auto session = onDisk();
        auto &repository = session.repository;
        const auto chat = makeChat(repository, u"kept"_s);
        const auto next = [&] { return textsAfter(*saves + 1).last(); };
        while (*saves < allSaves) {
            const auto reply = say(repository, *chat, next());
            ++*saves;
            reply->setContent(next());
            repository.save();
            ++*saves;
            repository.remove(*makeChat(repository, u"removed"_s, {u"one"_s, u"two"_s}));
        }
        sayAnew(repository);
    }

    // A turn whose reply is made again, deleted and put back.
    static void sayAnew(ConversationRepository &repository)
    {
        const auto chat = makeChat(repository, u"anew"_s);
        const auto make = [&](const QString &text, MessageRole role) {
            return repository.makeMessage({.id = QUuid::createUuid(), .role = role, .content = text});
        };
        const auto reply = make(u"reply"_s, MessageRole::assistant);
        repository.add({make(u"question"_s, MessageRole::user), reply}, *chat);
        reply->setSetAside(true);
        repository.add({make(u"another"_s, MessageRole::assistant)}, *chat);
        const Conversation::Messages all = chat->messages();
        repository.remove(all, *chat);
        repository.putBack(all, *chat);
    }

    static void expectBeforeOrAfter(const Conversation &anew)
    {
        QStringList shown;
        for (const auto &message : anew.transcript())
            shown += message->content();
        const auto is = [&](const QString &texts, std::size_t stored) {
            return shown.join(u' ') == texts && anew.messages().size() == stored;
        };
        EXPECT_TRUE(is(QString(), 0) || is(u"question reply"_s, 2) || is(u"question another"_s, 3))
            << shown.join(u' ').toStdString();
    }

    // Writes in a process that is killed at this call to its files; false when it came to its end before.
    bool isKilledAt(int call)
    {
        *saves = 0;
        const pid_t child = ::fork();
        if (child == 0) {
            FileSpy spy(home.path());
            spy.killAt(call);
            write();
            ::_exit(0);
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(status == 0 || WTERMSIG(status) == SIGKILL);
        return WIFSIGNALED(status);
    }

    void expectWhole()
    {
        auto session = onDisk();
        QStringList kept;
        qsizetype messages = 0;
        for (const auto &chat : session.repository.all()) {
            messages += std::ssize(chat->messages());
            if (chat->title() == u"kept"_s)
                kept = textsOf(*chat);
            if (chat->title() == u"anew"_s)
                expectBeforeOrAfter(*chat);
        }
        EXPECT_EQ(session.context().count<ChatMessage>(), messages) << "messages without a conversation";
        EXPECT_TRUE(kept == textsAfter(*saves) || kept == textsAfter(*saves + 1)) << *saves;
    }

    static constexpr int allSaves = 2;

    // The writing process counts here.
    int *saves =
        new (::mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) int(0);
};

TEST_F(StoreCrashTest, AProcessKilledAtAnyCallLeavesAWholeStoreWithAllItSaved)
{
    int call = 1;
    for (; isKilledAt(call) && !HasFailure(); ++call) {
        expectWhole();
        QDir(home.path()).removeRecursively();
        QDir().mkpath(home.path());
    }
    EXPECT_EQ(*saves, allSaves) << call;
    RecordProperty("calls", call);
    expectWhole();
    EXPECT_GT(call, 20) << "the calls were not seen";
}

} // namespace

} // namespace morvane
