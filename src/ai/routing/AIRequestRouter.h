#pragma once

#include "ai/routing/BurstGuard.h"
#include "ai/routing/LocalFallbackStream.h"
#include "ai/routing/ModelCapabilities.h"
#include "ai/routing/OpenedTurn.h"
#include "ai/routing/PrivacyJudge.h"
#include "ai/routing/PrivacyNotice.h"
#include "ai/routing/PrivateCloud.h"
#include "ai/routing/PromptParts.h"
#include "ai/routing/SourceOption.h"
#include "ai/routing/TurnRoute.h"
#include "async/TaskHandle.h"

#include <QObject>

#include <functional>

namespace morvane {

class KeychainServicing;
class SettingsStore;
class Work;

// Decides for each turn who answers, and prepares the exact request. Holds no chat state. GUI thread.
//
// Its tasks end with CancelledError when it goes.
class AIRequestRouter : public QObject {
    Q_OBJECT
public:
    // The references and the probes outlive the router.
    struct Services {
        SettingsStore &settings;
        KeychainServicing &keychain;
        ProofLedger &proofs;
        Clock &clock;
        Work &work;
        std::shared_ptr<AIConnectionTesting> provider;     // of the chat-completions dialect
        std::shared_ptr<AIConnectionTesting> nativeOllama; // without it every server speaks that dialect
        OllamaProbing *ollama = nullptr;                   // without it no server is asked about its models
        PrivateCloud privateCloud;
        LocalModelServing *localModel = nullptr; // without it nothing runs in the program itself
        PromptParts prompts;
        std::function<std::vector<AITool>()> tools; // those that may be offered now; may be empty
    };

    explicit AIRequestRouter(Services services, QObject *parent = nullptr);

    // Where the keychain holds the key of the person's service.
    [[nodiscard]] static QString apiKeyAccount();

    // For tests. An injected provider takes the place of every other one, and no server is asked about
    // itself or its models then.
    void injectProvider(std::shared_ptr<AIProvider> provider) { m_injectedProvider = std::move(provider); }
    void setHostLookup(HostPrivacy::Lookup lookup) { m_hosts.setLookup(std::move(lookup)); }
    void setSubnets(HostPrivacy::Subnets subnets) { m_hosts.setSubnets(std::move(subnets)); }

    // What is in use, and what a window says about it.
    [[nodiscard]] bool usesPrivateCloud() const;
    [[nodiscard]] ChatSource chatSource() const;
    // Whether there is anybody to answer: a place, and a model there. An address alone is where one starts
    // out.
    [[nodiscard]] bool isConfigured() const;
    [[nodiscard]] QString sourceLabel() const;
    [[nodiscard]] std::optional<PrivacyNotice> privacyNotice() const;
    [[nodiscard]] std::optional<QString> privateCloudNotice() const;

    // Finds out about the place in use before anything is sent there, so that the words above are true by
    // then. Asks a server nearby, once for each address and model; nobody outside.
    void lookAhead();

    // The menu of sources. Choosing never changes the server that the settings name; choosing the private
    // cloud also tries it again after a refusal.
    [[nodiscard]] std::vector<SourceOption> sources() const;
    void choose(SourceOption::Choice choice);

    // The last refusal of a hardware proof; the private cloud stays off until it is tried again.
    [[nodiscard]] const std::optional<QString> &lastEnclaveRefusal() const { return m_lastEnclaveRefusal; }
    void tryPrivateCloudAgain();

    // The token budget of a continued reply.
    [[nodiscard]] std::int64_t outputBudget() const;

    // Whether the model in use sees images; nothing when its server doesn't tell.
    [[nodiscard]] QCoro::Task<std::optional<bool>> seesImages(std::stop_token stop);

    // The model that sees images, when the one in use can't; nothing means no change.
    [[nodiscard]] QCoro::Task<std::optional<QString>>
    visionModel(std::vector<ContextBuilder::HistoryItem> history, std::stop_token stop);

    // The model that can call tools, when the one in use can't; nothing means no change. A turn that carries
    // private data reaches no server outside, not even with this question.
    [[nodiscard]] QCoro::Task<std::optional<QString>> toolsModel(SensitiveDataSet carrying,
                                                                 std::stop_token stop);

    // Returns once a local model that is starting is ready or has failed, at the latest after 30 seconds,
    // and when it is stopped.
    [[nodiscard]] QCoro::Task<> waitForLocalModel(std::stop_token stop);

    // Throws ProviderError, and KeychainError when the service's key can't be read.
    [[nodiscard]] QCoro::Task<PreparedRequest> prepareRequest(TurnRequest turn, std::stop_token stop);

    // The provider that serves a configuration. Leaves a proof row that says where the answer runs; the
    // private cloud's provider leaves its own.
    [[nodiscard]] QCoro::Task<std::shared_ptr<AIProvider>> provider(AIConfiguration configuration,
                                                                    std::stop_token stop);

    // All of the above in their order: waits for the local model where private data needs it, lets another
    // model stand in, prepares the request and finds its provider. Throws as they do.
    [[nodiscard]] QCoro::Task<OpenedTurn> openTurn(TurnRequest turn, std::stop_token stop);

    // The reply of an opened turn. A refusal of the private cloud turns into its reason and the local
    // model's reply.
    [[nodiscard]] AsyncStream<AIStreamEvent> stream(OpenedTurn turn);

    // Leaves a proof row of its own for the requests of a reply that carry more than those of `row` did, at
    // the same place. The new row's id, or `row` when it has gone.
    [[nodiscard]] QUuid noteCarrying(const QUuid &row, SensitiveDataSet carrying);

    // What the settings name, whatever the private cloud's switch says.
    [[nodiscard]] AIConfiguration settingsConfiguration() const;

    // Tries a configuration, for the settings page. Returns what the server said, which may be nothing.
    // Throws ProviderError.
    [[nodiscard]] QCoro::Task<QString> testConnection(AIConfiguration configuration, std::stop_token stop);
    [[nodiscard]] QCoro::Task<ReplyTrial> tryReply(AIConfiguration configuration, std::vector<AITool> tools,
                                                   std::stop_token stop);

    // The tokens that a reply of the server in the settings may have, which are more than they name for one
    // nearby.
    [[nodiscard]] std::int64_t replyLimit() const;

Q_SIGNALS:
    // Anything that chatSource(), the notices or sources() tell of may be different now.
    void sourceChanged();

private:
    [[nodiscard]] JudgedPlace placeOf(const QString &baseURL, const QString &model) const;
    [[nodiscard]] ChatSource configuredSource() const;
    [[nodiscard]] std::optional<AIConfiguration> localConfiguration() const;
    [[nodiscard]] TurnRoute chosenRoute(const TurnRequest &turn);
    [[nodiscard]] std::optional<TurnRoute> localRoute(const TurnRequest &turn) const;
    [[nodiscard]] QCoro::Task<PrivacyClass> privacyOf(TurnRoute route, std::stop_token stop);
    [[nodiscard]] PreparedRequest assembled(const TurnRequest &turn, const TurnRoute &route) const;
    [[nodiscard]] QCoro::Task<std::optional<QString>> standIn(ModelCapabilities::Ability ability,
                                                              std::stop_token stop);
    [[nodiscard]] std::shared_ptr<AIProvider> privateCloudProvider();
    // The provider of the dialect that a server speaks.
    [[nodiscard]] QCoro::Task<std::shared_ptr<AIConnectionTesting>> speakerAt(QString baseURL,
                                                                              std::stop_token stop);
    // The model on this machine in place of the private cloud's; nothing when none is ready, nor when the one
    // that is passes its questions on. Its proof row becomes the turn's.
    [[nodiscard]] QCoro::Task<std::optional<LocalFallbackStream::Decisions::Place>>
    standby(AIConfiguration refused, std::shared_ptr<QUuid> proofRow, std::stop_token stop);
    [[nodiscard]] QCoro::Task<std::shared_ptr<AIProvider>>
    providerAt(JudgedPlace place, AIConfiguration configuration, std::stop_token stop);
    [[nodiscard]] QCoro::Task<> learn(TurnRoute route, std::stop_token stop);
    void setRefusal(std::optional<QString> reason);

    Services m_services;
    std::shared_ptr<AIProvider> m_injectedProvider;
    std::shared_ptr<AIProvider> m_privateCloudProvider;
    std::optional<QString> m_lastEnclaveRefusal;

    HostPrivacy m_hosts;
    ModelInventory m_inventory;
    OllamaDetection m_detection;
    ModelCapabilities m_capabilities;
    PrivacyJudge m_judge;
    BurstGuard m_burst;
    TaskHandle m_lookAhead;
    Lifeline m_lifeline;
};

} // namespace morvane
