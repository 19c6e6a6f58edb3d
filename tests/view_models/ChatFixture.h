#pragma once

#include "ai/agent/AgentEvent.h"
#include "ai/routing/PreparedRequest.h"
#include "models/ChatMessage.h"
#include "support/Await.h"
#include "support/ManualClock.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/companion/CompanionViewModel.h"

#include <gtest/gtest.h>

namespace morvane {

class FakeFieldSealing;

// Replies that a test plays event by event, and what was asked for.
class ReplyScript {
public:
    struct Asked {
        PreparedRequest request;
        QString scopeKey;
        QString userWords;
    };

    virtual ~ReplyScript() = default;

    // To the newest reply, and lets the turn take it.
    virtual void yield(AgentEvent event) = 0;
    virtual void finish() = 0;
    virtual void fail(std::exception_ptr error) = 0;
    [[nodiscard]] virtual bool isAbandoned() const = 0;
    void text(const QString &piece) { yield(Agent::Text{piece}); }
    [[nodiscard]] const AIMessage &lastWords() const { return asked.back().request.messages.back(); }

    std::vector<Asked> asked;
};

// A chat controller over a small store in memory, scripted replies and a clock that stands still.
class ChatFixture : public testing::Test {
protected:
    using Rows = std::vector<std::pair<bool, QString>>; // is user, text

    ChatFixture();
    ~ChatFixture() override;

    // Ends what a test left running, so that no suspended turn outlives its services.
    void TearDown() override;

    // Sends a message and lets the turn come to its wait for the reply.
    void send(const QString &text);
    void deliver(const QString &question, const QString &answer);

    [[nodiscard]] std::shared_ptr<ChatMessage> lastMessage() const;
    [[nodiscard]] QVariant lastRow(MessageListModel::Role role) const;
    [[nodiscard]] Rows transcript() const;

    // Another controller over the same rooms.
    [[nodiscard]] std::unique_ptr<ChatViewModel> another();

private:
    struct World;
    std::unique_ptr<World> m_world;

protected:
    ManualClock &clock;
    FakeFieldSealing &sealing;
    ConversationRepository &repository;
    SettingsStore &settings;
    ProofLedger &proofs;
    CompanionViewModel &companion;
    ReplyScript &replies;
    const QStringList &heard; // what was read aloud and notified, in order
    ChatViewModel &chat;
};

} // namespace morvane
