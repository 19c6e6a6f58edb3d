#pragma once

#include "ai/agent/ReplyRunner.h"
#include "ai/routing/AIRequestRouter.h"
#include "attestation/ProofLedger.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/PersistenceController.h"
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

// Replies that a test plays event by event.
class ScriptedReplies final : public ReplyRunning {
public:
    [[nodiscard]] AsyncStream<AgentEvent> run(PreparedRequest request, TurnScope scope,
                                              std::shared_ptr<AIProvider> provider) override;

    // Yields to the newest run and lets the turn take it.
    void yield(AgentEvent event);
    void text(const QString &piece) { yield(Agent::Text{piece}); }
    void finish();
    void fail(std::exception_ptr error);
    [[nodiscard]] bool isAbandoned() const { return m_producers.back().stopToken().stop_requested(); }

    std::vector<PreparedRequest> requests;
    std::vector<TurnScope> scopes;

private:
    std::vector<AsyncStream<AgentEvent>::Producer> m_producers;
};

class NotificationLog final : public ReplyNotifying {
public:
    void replyReady(const QUuid &, const QString &title) override
    {
        lines.append(QStringLiteral("ready ") + title);
    }
    void ghostReplyReady() override { lines.append(QStringLiteral("ghost")); }
    void replyFailed(const QString &message, const QString &suggestion) override
    {
        lines.append(QStringLiteral("failed ") + message + u'|' + suggestion);
    }

    QStringList lines;
};

// A chat controller over a store in memory, scripted replies and a clock that stands still.
class ChatFixture : public testing::Test {
protected:
    ChatFixture();

    // Ends what a test left running, so that no suspended turn outlives its services.
    void TearDown() override;

    // Sends a message and lets the turn come to its wait for the reply.
    void send(const QString &text);

    [[nodiscard]] std::shared_ptr<ChatMessage> lastMessage() const
    {
        return chat.messages()->messages().back();
    }
    [[nodiscard]] QVariant lastRow(MessageListModel::Role role) const;
    [[nodiscard]] std::vector<std::pair<bool, QString>> transcript() const; // is user, text

    ManualClock clock;
    std::shared_ptr<FakeFieldSealing> sealing = std::make_shared<FakeFieldSealing>();
    std::unique_ptr<PersistenceController> persistence = PersistenceController::inMemory(sealing);
    InMemorySettingsRepository settingsRepository;
    SettingsStore settings{settingsRepository};
    ConversationRepository repository{persistence->mainContext(), clock, &settingsRepository};
    InMemoryKeychainService keychain;
    ProofLedger proofs;
    AIRequestRouter router{{.settings = settings, .keychain = keychain, .proofs = proofs, .clock = clock}};
    ScriptedReplies replies;
    NotificationLog notifications;
    CompanionViewModel companion{clock};
    mutable ChatViewModel chat;
};

} // namespace morvane
