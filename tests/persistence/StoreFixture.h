#pragma once

#include "persistence/ConversationRepository.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/PersistenceController.h"
#include "support/FakeFieldSealing.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"
#include "utils/files/PrivateFile.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

// What the tests of the chat store share: a profile of its own, and short ways to say and to read chats.

inline std::shared_ptr<ChatMessage> say(ConversationRepository &repository, Conversation &chat,
                                        const QString &text, MessageRole role = MessageRole::user)
{
    auto message = repository.makeMessage({.id = QUuid::createUuid(),
                                           .role = role,
                                           .content = text,
                                           .createdAt = chat.createdAt(),
                                           .status = MessageStatus::delivered,
                                           .attachmentName = QStringLiteral("attached ") + text});
    repository.add(message, chat);
    return message;
}

inline std::shared_ptr<Conversation> makeChat(ConversationRepository &repository, const QString &title,
                                              const QStringList &texts = {})
{
    auto chat = repository.create();
    repository.rename(*chat, title);
    for (const QString &text : texts)
        say(repository, *chat, text);
    return chat;
}

inline QStringList titlesOf(const ConversationRepository::Conversations &chats)
{
    QStringList titles;
    for (const auto &chat : chats)
        titles += chat->title();
    return titles;
}

inline QStringList textsOf(const Conversation &chat)
{
    QStringList texts;
    for (const auto &message : chat.messages())
        texts += message->content();
    return texts;
}

inline QByteArray bytesOf(const QString &path)
{
    return PrivateFile::read(path, 1 << 30).value_or(QByteArray("(no file)"));
}

class StoreFixture : public testing::Test {
protected:
    // One run of the application over a store.
    struct Session {
        Session(std::unique_ptr<PersistenceController> opened, StoreFixture &fixture)
            : persistence(std::move(opened))
            , repository(persistence->mainContext(), fixture.clock, &fixture.defaults)
        {}

        [[nodiscard]] ObjectContext &context() { return repository.context(); }

        std::unique_ptr<PersistenceController> persistence;
        ConversationRepository repository;
    };

    [[nodiscard]] Session inMemory() { return {PersistenceController::inMemory(sealing), *this}; }
    [[nodiscard]] Session onDisk()
    {
        return {PersistenceController::onDisk({folders, defaults, [] { return false; }, {}}, sealing), *this};
    }

    QTemporaryDir home;
    SupportFolders folders = SupportFolders::inProfile(home.path());
    QString path = ChatStoreLocation::storePath(folders);
    InMemorySettingsRepository defaults;
    ManualClock clock;
    std::shared_ptr<FakeFieldSealing> sealing = std::make_shared<FakeFieldSealing>();
    LogCapture log;
};

} // namespace morvane
