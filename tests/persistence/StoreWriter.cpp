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

void report(const QString &line)
{
    const QByteArray bytes = line.toUtf8() + '\n';
    if (::write(STDOUT_FILENO, bytes.constData(), static_cast<std::size_t>(bytes.size())) != bytes.size())
        ::_exit(1);
}

void reportSaved(const ChatMessage &message)
{
    report(u"saved %1 %2 %3"_s.arg(message.conversationID()->toString(), message.id().toString())
               .arg(*StoreWriterText::versionOf(message.content())));
}

} // namespace

// Writes chats without end into a profile, as turns do, and says on its standard output what has been saved:
//
//     saved CONVERSATION MESSAGE VERSION     the message is on disk with the text of this version
//     removing CONVERSATION                  from here on it may be gone
int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QString profile = QString::fromLocal8Bit(argv[1]);
    std::mt19937 random(static_cast<unsigned>(std::atoi(argv[2])));
    SystemClock clock;
    InMemorySettingsRepository defaults;
    const auto persistence =
        PersistenceController::onDisk({SupportFolders::inProfile(profile), defaults, [] { return false; }},
                                      std::make_shared<FakeFieldSealing>());
    ConversationRepository repository(persistence->mainContext(), clock);
    for (int version = 1;; version += 8) {
        const auto chats = repository.all();
        if (chats.size() < 3 || random() % 16 == 0) {
            repository.rename(*repository.create(), StoreWriterText::make(version % 2));
            continue;
        }
        Conversation &chat = *chats[random() % chats.size()];
        if (chats.size() > 6) {
            report(u"removing "_s + chat.id().toString());
            repository.remove(chat);
            continue;
        }
        // A reply that streams: saved when it is added and when it is whole.
        const auto reply = repository.makeMessage({.id = QUuid::createUuid(),
                                                   .role = MessageRole::assistant,
                                                   .content = StoreWriterText::make(version),
                                                   .createdAt = clock.now(),
                                                   .status = MessageStatus::streaming});
        repository.add(reply, chat);
        reportSaved(*reply);
        for (int piece = 0; piece < static_cast<int>(random() % 5); ++piece)
            reply->setContent(StoreWriterText::make(version + 1 + piece));
        if (random() % 4 == 0)
            repository.rename(chat, StoreWriterText::make(version % 2));
        reply->setStatus(MessageStatus::delivered);
        repository.save();
        reportSaved(*reply);
    }
}
