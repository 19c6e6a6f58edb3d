// Whole runs: the reply runner, the real provider and HTTP client, and the model server on the other side of
// a socket. Only the web and the desktop are doubles.

#include "ai/agent/AgentFixture.h"
#include "ai/agent/ReplyRunner.h"
#include "ai/providers/OpenAICompatibleProvider.h"
#include "ai/routing/AIRequestRouter.h"
#include "async/Work.h"
#include "attestation/ProofLedger.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "support/ModelServer.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class AgentRunsAgainstServerTest : public ToolFixture {
protected:
    PlayedRun ask(const QString &name, ModelServer &model)
    {
        OpenedTurn turn{.provider = provider, .proofRow = proofRow};
        PreparedRequest &request = turn.request;
        request.messages = {{.role = AIMessage::Role::user, .content = u"What is the weather?"_s}};
        request.configuration.baseURLString = model.baseUrl();
        request.configuration.maxOutputTokens = 100;
        request.configuration.model = name;
        request.configuration.purpose = u"chat"_s;
        request.tools = registry.availableTools();
        request.memoryAllowed = true;
        return readRun(runner.run(std::move(turn), {u"chat:A"_s, u"What is the weather?"_s}));
    }

    void TearDown() override
    {
        TestWait::settle();
        server.awaitEnded(server.requests().size());
        TestWait::settle();
    }

    ModelServer server;
    NetworkLedger ledger;
    AppNetwork network{ledger, clock};
    std::shared_ptr<OpenAICompatibleProvider> provider = std::make_shared<OpenAICompatibleProvider>(network);
    ProofLedger proofs;
    std::shared_ptr<QUuid> proofRow =
        std::make_shared<QUuid>(proofs.append({.id = QUuid::createUuid(), .purpose = u"chat"_s}));
    Work work{clock};
    AIRequestRouter router{{.settings = settings,
                            .keychain = keychain,
                            .proofs = proofs,
                            .clock = clock,
                            .work = work,
                            .provider = provider}};
    ReplyRunner runner{router, registry};
};

// It refuses the tag that the first request has, and what a later round adds to the messages.
TEST_F(AgentRunsAgainstServerTest, AStrictServiceIsAskedOnceMoreInATurnAndToldAllThatWasLearnedInTheNext)
{
    ModelServer strict({u"--strict"_s, u"cloud"_s});
    const PlayedRun first = ask(u"agent-refuses-search"_s, strict);
    EXPECT_EQ(first.error.value().quotedWords(), u"System message must be at the beginning."_s);
    strict.awaitRequests(3);
    EXPECT_EQ(strict.requests().size(), 3U);
    EXPECT_EQ(ask(u"agent-refuses-search"_s, strict).error, std::nullopt);
    strict.awaitRequests(6);
    EXPECT_EQ(strict.requests().size(), 6U) << "none of them refused";
    // A request's row may come behind the reply that it was read for.
    TestWait::until([this] { return ledger.snapshot().entries.size() >= 6U; });
    EXPECT_EQ(ledger.snapshot().entries.size(), 6U);
}

TEST_F(AgentRunsAgainstServerTest, WhatIsReadFromTheScreenIsCarriedByTheLaterRoundsInBothLedgers)
{
    EXPECT_TRUE(ask(u"agent-looks"_s, server).shown().contains(u"words on the screen"_s));
    TestWait::until([this] { return ledger.snapshot().entries.size() == 2U; });
    const auto rows = ledger.snapshot().entries;
    EXPECT_EQ(rows[0].carrying, SensitiveDataSet());
    EXPECT_EQ(rows[1].carrying, SensitiveDataSet(SensitiveData::screenText));
    ASSERT_EQ(proofs.snapshot().entries.size(), 2U);
    EXPECT_EQ(proofs.find(*proofRow)->carrying, SensitiveDataSet(SensitiveData::screenText));
}

} // namespace

} // namespace morvane
