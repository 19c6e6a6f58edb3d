#include "view_models/ChatFixture.h"

#include "persistence/StoreSchema.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Has no room for a message of a million characters.
Database smallStore()
{
    Database database = Database::inMemory();
    StoreSchema::prepare(database);
    database.execute("PRAGMA max_page_count = 200");
    return database;
}

} // namespace

ChatFixture::ChatFixture()
    : ChatFixture(smallStore())
{}

ChatFixture::ChatFixture(Database store)
    : context(std::move(store), sealing)
{
    router.setHostLookup([](QString, std::stop_token) -> QCoro::Task<QStringList> { co_return {}; });
    settings.setModel(u"practice"_s);
    chat.openAtStart();
}

void ChatFixture::TearDown()
{
    chat.stopResponding();
    TestWait::settle();
}

void ChatFixture::send(const QString &text)
{
    chat.setDraft(text);
    chat.send();
    TestWait::settle();
}

void ChatFixture::deliver(const QString &question, const QString &answer)
{
    send(question);
    replies.text(answer);
    replies.finish();
}

std::shared_ptr<ChatMessage> ChatFixture::lastMessage()
{
    return chat.messages()->messages().back();
}

QVariant ChatFixture::lastRow(MessageListModel::Role role)
{
    auto *model = chat.messages();
    return model->index(model->rowCount() - 1).data(role);
}

ChatFixture::Rows ChatFixture::transcript()
{
    Rows rows;
    for (const auto &message : chat.messages()->messages())
        rows.emplace_back(message->role() == MessageRole::user, message->content());
    return rows;
}

} // namespace morvane
