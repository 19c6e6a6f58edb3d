#include "view_models/ChatFixture.h"

namespace morvane {

using namespace Qt::StringLiterals;

AsyncStream<AgentEvent> ScriptedReplies::run(PreparedRequest request, TurnScope scope,
                                             std::shared_ptr<AIProvider>)
{
    requests.push_back(std::move(request));
    scopes.push_back(std::move(scope));
    auto [stream, producer] = AsyncStream<AgentEvent>::make();
    m_producers.push_back(std::move(producer));
    return std::move(stream);
}

void ScriptedReplies::yield(AgentEvent event)
{
    m_producers.back().yield(std::move(event));
    TestWait::settle();
}

void ScriptedReplies::finish()
{
    m_producers.back().finish();
    TestWait::settle();
}

void ScriptedReplies::fail(std::exception_ptr error)
{
    m_producers.back().fail(std::move(error));
    TestWait::settle();
}

ChatFixture::ChatFixture()
    : chat({.repository = repository,
            .router = router,
            .replies = replies,
            .settings = settings,
            .proofs = proofs,
            .companion = companion,
            .clock = clock,
            .notifications = &notifications})
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

QVariant ChatFixture::lastRow(MessageListModel::Role role) const
{
    auto *model = chat.messages();
    return model->index(model->rowCount() - 1).data(role);
}

std::vector<std::pair<bool, QString>> ChatFixture::transcript() const
{
    std::vector<std::pair<bool, QString>> rows;
    for (const auto &message : chat.messages()->messages())
        rows.emplace_back(message->role() == MessageRole::user, message->content());
    return rows;
}

} // namespace morvane
