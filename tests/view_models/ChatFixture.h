#pragma once

#include "ai/agent/ReplyRunner.h"
#include "ai/contract/ProviderError.h"
#include "ai/routing/AIRequestRouter.h"
#include "ai/routing/LocalModelServing.h"
#include "async/Work.h"
#include "attestation/ProofLedger.h"
#include "audio/SpeechOutputting.h"
#include "models/ChatMessage.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/SettingsStore.h"
#include "security/InMemoryKeychainService.h"
#include "support/Await.h"
#include "support/FakeFieldSealing.h"
#include "support/ManualClock.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/chat/ReplyPorts.h"
#include "view_models/companion/CompanionViewModel.h"

#include <gtest/gtest.h>

namespace morvane {

// Replies that a test plays event by event, and what was asked for.
class ReplyScript final : public ReplyRunning {
public:
    struct Asked {
        PreparedRequest request;
        QString scopeKey;
        QString userWords;
    };

    [[nodiscard]] AsyncStream<AgentEvent> run(OpenedTurn turn, TurnScope scope) override
    {
        asked.push_back({std::move(turn.request), std::move(scope.key), std::move(scope.userWords)});
        auto [stream, producer] = AsyncStream<AgentEvent>::make();
        m_producers.push_back(std::move(producer));
        return std::move(stream);
    }

    // To the newest reply, and lets the turn take it.
    void yield(AgentEvent event)
    {
        m_producers.back().yield(std::move(event));
        TestWait::settle();
    }
    void text(const QString &piece) { yield(Agent::Text{piece}); }
    void finish()
    {
        m_producers.back().finish();
        TestWait::settle();
    }
    void fail(std::exception_ptr error)
    {
        m_producers.back().fail(std::move(error));
        TestWait::settle();
    }
    [[nodiscard]] bool isAbandoned() const { return m_producers.back().stopToken().stop_requested(); }

    std::vector<Asked> asked;

private:
    std::vector<AsyncStream<AgentEvent>::Producer> m_producers;
};

// Speech lasts three seconds.
class Desktop final : public SpeechOutputting, public ReplyNotifying {
public:
    Desktop(Clock &clock, QStringList &heard)
        : m_clock(clock)
        , m_heard(heard)
    {}

    QCoro::Task<> speak(QString text, std::optional<QString> voice, double, bool,
                        std::stop_token stop) override
    {
        m_heard.append(QStringLiteral("aloud ") + text + voice.value_or(QString()));
        co_await pause(m_clock, std::chrono::seconds(3), stop);
    }
    void stop() override { m_heard.append(QStringLiteral("hushed")); }
    void replyReady(const QUuid &, const QString &title) override
    {
        m_heard.append(QStringLiteral("ready ") + title);
    }
    void ghostReplyReady() override { m_heard.append(QStringLiteral("ghost")); }
    void ghostReplyFailed(const QString &, const QString &) override
    {
        m_heard.append(QStringLiteral("ghost failed"));
    }
    void withdrawGhostReplies() override { m_heard.append(QStringLiteral("ghosts withdrawn")); }
    void withdrawChat(const QUuid &conversation) override { read = conversation; }
    void replyFailed(const QUuid &, const QString &message, const QString &suggestion) override
    {
        m_heard.append(QStringLiteral("failed ") + message + u'|' + suggestion);
    }
    void approvalWaits(const QString &verb) override { m_heard.append(QStringLiteral("waits ") + verb); }
    void withdrawApproval() override { m_heard.append(QStringLiteral("withdrawn")); }
    void withdrawAll() override { m_heard.append(QStringLiteral("withdrawn all")); }

    QUuid read; // the chat whose notification was withdrawn last

private:
    Clock &m_clock;
    QStringList &m_heard;
};

// A runtime on this machine.
class RestartedModel final : public LocalModelServing {
public:
    [[nodiscard]] State state() const override { return State::ready; }
    [[nodiscard]] QString model() const override { return QStringLiteral("practice"); }
    void restart() override {}
};

// A chat controller over a store, in memory if no other is given, scripted replies and a clock that stands
// still.
class ChatFixture : public testing::Test {
protected:
    using Rows = std::vector<std::pair<bool, QString>>; // is user, text

    ChatFixture(); // over a store that has no room for a message of a million characters
    explicit ChatFixture(Database store);

    // Ends what a test left running, so that no suspended turn outlives its services.
    void TearDown() override;

    // Sends a message and lets the turn come to its wait for the reply.
    void send(const QString &text);
    void deliver(const QString &question, const QString &answer);

    [[nodiscard]] std::shared_ptr<ChatMessage> lastMessage();

    // What of a request stands behind its system prompt.
    [[nodiscard]] QStringList sentWords() const
    {
        QStringList words;
        for (const AIMessage &message : replies.asked.back().request.messages)
            words.append(message.content);
        return words.mid(1);
    }
    [[nodiscard]] QVariant lastRow(MessageListModel::Role role);
    [[nodiscard]] Rows transcript();
    [[nodiscard]] static std::exception_ptr errorOf(ProviderError::Case reason)
    {
        return std::make_exception_ptr(ProviderError(std::move(reason)));
    }
    template <typename State>
    [[nodiscard]] bool indicates()
    {
        return std::holds_alternative<State>(chat.messages()->indicator(lastMessage()->id())->state());
    }

    ManualClock clock;
    std::shared_ptr<FakeFieldSealing> sealing = std::make_shared<FakeFieldSealing>();
    ObjectContext context;
    InMemorySettingsRepository settingsRepository;
    SettingsStore settings{settingsRepository};
    ConversationRepository repository{context, clock, &settingsRepository};
    InMemoryKeychainService keychain;
    ProofLedger proofs;
    Work work{clock};
    AIRequestRouter router{
        {.settings = settings, .keychain = keychain, .proofs = proofs, .clock = clock, .work = work}};
    ReplyScript replies;
    QStringList heard; // what was read aloud and notified, in order
    Desktop desktop{clock, heard};
    CompanionViewModel companion{clock};
    bool isLocked = false;
    RestartedModel localModel;
    ChatViewModel::Services services{.repository = repository,
                                     .router = router,
                                     .replies = replies,
                                     .settings = settings,
                                     .proofs = proofs,
                                     .companion = companion,
                                     .clock = clock,
                                     .speech = &desktop,
                                     .notifications = &desktop,
                                     .localModel = &localModel,
                                     .isLocked = [this] { return isLocked; }};
    ChatViewModel chat{services};
};

} // namespace morvane
