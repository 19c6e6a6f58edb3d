#include "view_models/ChatFixture.h"

#include "ai/agent/ReplyRunner.h"
#include "ai/routing/AIRequestRouter.h"
#include "async/Work.h"
#include "attestation/ProofLedger.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/SettingsStore.h"
#include "persistence/StoreSchema.h"
#include "security/InMemoryKeychainService.h"
#include "support/FakeFieldSealing.h"
#include "view_models/chat/ReplyPorts.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class ScriptedReplies final : public ReplyRunning, public ReplyScript {
public:
    [[nodiscard]] AsyncStream<AgentEvent> run(OpenedTurn turn, TurnScope scope) override
    {
        asked.push_back({std::move(turn.request), std::move(scope.key), std::move(scope.userWords)});
        auto [stream, producer] = AsyncStream<AgentEvent>::make();
        m_producers.push_back(std::move(producer));
        return std::move(stream);
    }

    void yield(AgentEvent event) override
    {
        m_producers.back().yield(std::move(event));
        TestWait::settle();
    }
    void finish() override
    {
        m_producers.back().finish();
        TestWait::settle();
    }
    void fail(std::exception_ptr error) override
    {
        m_producers.back().fail(std::move(error));
        TestWait::settle();
    }
    [[nodiscard]] bool isAbandoned() const override
    {
        return m_producers.back().stopToken().stop_requested();
    }

private:
    std::vector<AsyncStream<AgentEvent>::Producer> m_producers;
};

// Has no room for a message of a million characters.
Database smallStore()
{
    Database database = Database::inMemory();
    StoreSchema::prepare(database);
    database.execute("PRAGMA max_page_count = 200");
    return database;
}

// Speech lasts three seconds.
class Desktop final : public SpeechOutputting, public ReplyNotifying {
public:
    explicit Desktop(Clock &clock)
        : m_clock(clock)
    {}

    QCoro::Task<> speak(QString text, std::optional<QString> voice, double, bool,
                        std::stop_token stop) override
    {
        heard.append(u"aloud "_s + text + voice.value_or(QString()));
        co_await pause(m_clock, 3s, stop);
    }
    void stop() override { heard.append(u"hushed"_s); }
    void replyReady(const QUuid &, const QString &title) override { heard.append(u"ready "_s + title); }
    void ghostReplyReady() override { heard.append(u"ghost"_s); }
    void replyFailed(const QString &message, const QString &suggestion) override
    {
        heard.append(u"failed "_s + message + u'|' + suggestion);
    }

    QStringList heard;

private:
    Clock &m_clock;
};

} // namespace

struct ChatFixture::World {
    ManualClock clock;
    std::shared_ptr<FakeFieldSealing> sealing = std::make_shared<FakeFieldSealing>();
    ObjectContext context{smallStore(), sealing};
    InMemorySettingsRepository settingsRepository;
    SettingsStore settings{settingsRepository};
    ConversationRepository repository{context, clock, &settingsRepository};
    InMemoryKeychainService keychain;
    ProofLedger proofs;
    Work work{clock};
    AIRequestRouter router{
        {.settings = settings, .keychain = keychain, .proofs = proofs, .clock = clock, .work = work}};
    ScriptedReplies replies;
    Desktop desktop{clock};
    CompanionViewModel companion{clock};

    [[nodiscard]] ChatViewModel::Services services()
    {
        return {.repository = repository,
                .router = router,
                .replies = replies,
                .settings = settings,
                .proofs = proofs,
                .companion = companion,
                .clock = clock,
                .speech = &desktop,
                .notifications = &desktop};
    }
    ChatViewModel chat{services()};
};

ChatFixture::ChatFixture()
    : m_world(std::make_unique<World>())
    , clock(m_world->clock)
    , sealing(*m_world->sealing)
    , repository(m_world->repository)
    , settings(m_world->settings)
    , proofs(m_world->proofs)
    , companion(m_world->companion)
    , replies(m_world->replies)
    , heard(m_world->desktop.heard)
    , chat(m_world->chat)
{
    m_world->router.setHostLookup([](QString, std::stop_token) -> QCoro::Task<QStringList> { co_return {}; });
    settings.setModel(u"practice"_s);
    chat.openAtStart();
}

ChatFixture::~ChatFixture() = default;

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

std::shared_ptr<ChatMessage> ChatFixture::lastMessage() const
{
    return chat.messages()->messages().back();
}

QVariant ChatFixture::lastRow(MessageListModel::Role role) const
{
    auto *model = chat.messages();
    return model->index(model->rowCount() - 1).data(role);
}

ChatFixture::Rows ChatFixture::transcript() const
{
    Rows rows;
    for (const auto &message : chat.messages()->messages())
        rows.emplace_back(message->role() == MessageRole::user, message->content());
    return rows;
}

std::unique_ptr<ChatViewModel> ChatFixture::another()
{
    auto chat = std::make_unique<ChatViewModel>(m_world->services());
    chat->openAtStart();
    return chat;
}

} // namespace morvane
