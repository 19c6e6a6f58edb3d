#pragma once

#include "ai/contract/AIProvider.h"
#include "ai/routing/ChatSource.h"
#include "ai/routing/ContextBuilder.h"
#include "attestation/ProofLedger.h"

#include <QCoroTask>

#include <memory>
#include <optional>
#include <stop_token>

class Clock;
class KeychainServicing;
class SettingsStore;

// What a turn asks the router to prepare.
struct TurnRequest {
    std::vector<ContextBuilder::HistoryItem> history;
    std::optional<QString> rollingSummary;
    QString scopeKey; // "chat:" and the conversation's id; scoped approvals use it
    SensitiveDataSet carrying;
    std::optional<QString> visionModel; // takes the place of the configured model
    std::optional<QString> toolsModel;
    std::optional<std::int64_t> outputBudget; // of a continuation
    bool memoryAllowed = true;                // a Ghost chat keeps no notes
};

// What a turn goes on with.
struct PreparedRequest {
    std::vector<AIMessage> messages;
    AIConfiguration configuration;
    std::vector<AITool> tools;
    bool memoryAllowed = false;
};

// Decides for each turn who answers, and prepares the exact request. Holds no chat state. GUI thread.
class AIRequestRouter {
public:
    AIRequestRouter(SettingsStore &settings, KeychainServicing &keychain, ProofLedger &proofs, Clock &clock,
                    std::shared_ptr<AIConnectionTesting> provider);

    // Where the keychain holds the key of the person's service.
    [[nodiscard]] static QString apiKeyAccount();

    // Takes the place of every provider choice, for tests.
    void injectProvider(std::shared_ptr<AIProvider> provider) { m_injectedProvider = std::move(provider); }

    [[nodiscard]] ChatSource chatSource() const;

    // The model that sees images, when the one in use can't; nothing means no change.
    [[nodiscard]] QCoro::Task<std::optional<QString>>
    visionModel(std::vector<ContextBuilder::HistoryItem> history, std::stop_token stop);

    // The model that can call tools, when the one in use can't; nothing means no change.
    [[nodiscard]] QCoro::Task<std::optional<QString>> toolsModel(std::stop_token stop);

    // Returns once a local model that is starting is ready or has failed, at the latest after 30 seconds.
    [[nodiscard]] QCoro::Task<> waitForLocalModel(std::stop_token stop);

    // Throws ProviderError.
    [[nodiscard]] QCoro::Task<PreparedRequest> prepareRequest(TurnRequest turn, std::stop_token stop);

    // The provider that serves a configuration. Leaves a proof row that says where the answer runs.
    [[nodiscard]] QCoro::Task<std::shared_ptr<AIProvider>> provider(AIConfiguration configuration,
                                                                    std::stop_token stop);

    // The reply of a prepared request.
    [[nodiscard]] AsyncStream<AIStreamEvent> stream(PreparedRequest request,
                                                    std::shared_ptr<AIProvider> provider);

    // The configuration that the settings stand for now.
    [[nodiscard]] AIConfiguration settingsConfiguration() const;

    // Tries a configuration, for the settings page. Throws ProviderError.
    [[nodiscard]] QCoro::Task<QString> testConnection(AIConfiguration configuration, std::stop_token stop);

    // The token budget of a continued reply.
    [[nodiscard]] std::int64_t outputBudget() const;

private:
    SettingsStore &m_settings;
    KeychainServicing &m_keychain;
    ProofLedger &m_proofs;
    Clock &m_clock;
    std::shared_ptr<AIConnectionTesting> m_provider;
    std::shared_ptr<AIProvider> m_injectedProvider;
};
