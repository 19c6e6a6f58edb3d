#include "StoreWriterText.h"
#include "persistence/ConversationRepository.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/PersistenceController.h"
#include "support/FakeFieldSealing.h"

#include <QCoreApplication>

#include <random>
#include <unistd.h>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

// Writes chats without end, as turns do, and says on its standard output what has been saved:
//
//     saved CONVERSATION MESSAGE VERSION     the message is on disk with the text of this version
//     removing CONVERSATION                  from here on it may be gone
class StoreWriter {
public:
    StoreWriter(const QString &profile, unsigned seed)
        : m_persistence(PersistenceController::onDisk(
              {SupportFolders::inProfile(profile), m_defaults, [] { return false; }},
              std::make_shared<FakeFieldSealing>()))
        , m_random(seed)
    {}

    [[noreturn]] void run()
    {
        while (true) {
            const auto chats = m_repository.all();
            if (chats.size() < 3 || m_random() % 16 == 0)
                rename(*m_repository.create());
            else if (chats.size() > 6)
                remove(*chats.back());
            else
                takeTurn(*chats[m_random() % chats.size()]);
        }
    }

private:
    void rename(Conversation &chat) { m_repository.rename(chat, StoreWriterText::make(nextVersion() % 2)); }

    void remove(Conversation &chat)
    {
        say(u"removing %1\n"_s.arg(chat.id().toString()));
        m_repository.remove(chat);
    }

    // A reply that streams: saved when it is added and when it is whole.
    void takeTurn(Conversation &chat)
    {
        const auto reply = m_repository.makeMessage({.id = QUuid::createUuid(),
                                                     .role = MessageRole::assistant,
                                                     .content = StoreWriterText::make(nextVersion()),
                                                     .createdAt = m_clock.now(),
                                                     .status = MessageStatus::pending});
        m_repository.add(reply, chat);
        saved(*reply);
        reply->setStatus(MessageStatus::streaming);
        for (unsigned pieces = m_random() % 5; pieces > 0; --pieces)
            reply->setContent(StoreWriterText::make(nextVersion()));
        if (m_random() % 4 == 0)
            rename(chat);
        reply->setStatus(MessageStatus::delivered);
        m_repository.save();
        saved(*reply);
    }

    void saved(const ChatMessage &message)
    {
        const int version = *StoreWriterText::versionOf(message.content());
        say(u"saved %1 %2 %3\n"_s.arg(message.conversationID()->toString(), message.id().toString())
                .arg(version));
    }

    static void say(const QString &line)
    {
        const QByteArray bytes = line.toUtf8();
        if (::write(STDOUT_FILENO, bytes.constData(), static_cast<std::size_t>(bytes.size())) != bytes.size())
            ::_exit(1);
    }

    int nextVersion() { return ++m_version; }

    InMemorySettingsRepository m_defaults;
    SystemClock m_clock;
    std::unique_ptr<PersistenceController> m_persistence;
    ConversationRepository m_repository{m_persistence->mainContext(), m_clock};
    std::mt19937 m_random;
    int m_version = 0;
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc != 3)
        return 2;
    StoreWriter(QString::fromLocal8Bit(argv[1]), static_cast<unsigned>(std::atoi(argv[2]))).run();
}
