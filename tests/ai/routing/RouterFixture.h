#pragma once

#include "ai/ReplyReading.h"
#include "ai/ScriptedModel.h"
#include "ai/routing/AIRequestRouter.h"
#include "async/Work.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/SettingsStore.h"
#include "security/InMemoryKeychainService.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"

#include <gtest/gtest.h>

namespace morvane {

// A server that speaks Ollama's interface, by name.
class ScriptedProbes final : public OllamaProbing {
public:
    [[nodiscard]] QCoro::Task<ProbeAnswer<QString>> version(QString, std::stop_token) override
    {
        note(QStringLiteral("version"));
        co_return answer(isOllama ? std::optional(QStringLiteral("0.1")) : std::nullopt);
    }
    [[nodiscard]] QCoro::Task<ProbeAnswer<QStringList>> capabilities(QString, QString model,
                                                                     std::stop_token) override
    {
        note(QStringLiteral("show ") + model);
        const auto known = abilities.find(model);
        co_return answer(known == abilities.end() ? std::nullopt : std::optional(known->second));
    }
    [[nodiscard]] QCoro::Task<ProbeAnswer<std::vector<OllamaModel>>> modelList(QString,
                                                                               std::stop_token) override
    {
        note(QStringLiteral("tags"));
        co_return answer(models);
    }

    bool isUp = true;
    bool isOllama = false;
    std::optional<std::vector<OllamaModel>> models;
    std::map<QString, QStringList> abilities; // a model that isn't here doesn't tell
    std::function<void()> onQuestion;         // called with each
    QStringList asked;                        // "version", "show name", "tags"

private:
    template <typename Told>
    [[nodiscard]] ProbeAnswer<Told> answer(const std::optional<Told> &told) const
    {
        return {isUp ? told : std::nullopt, isUp};
    }
    void note(const QString &question)
    {
        asked.append(question);
        if (onQuestion)
            onQuestion();
    }
};

class ScriptedLocalModel final : public LocalModelServing {
public:
    [[nodiscard]] State state() const override { return m_state; }
    [[nodiscard]] QString model() const override { return m_model; }
    void set(State state, const QString &model = {})
    {
        m_state = state;
        m_model = model;
        Q_EMIT changed();
    }

private:
    State m_state = State::absent;
    QString m_model;
};

// A router between scripted providers, on a clock that stands still and a network of scripted names.
class RouterFixture : public testing::Test {
protected:
    RouterFixture();

    // Makes the router anew.
    void start();

    // Sets the address and the model that the settings name.
    void configure(const QString &baseURL, const QString &model)
    {
        settings.setBaseURLString(baseURL);
        settings.setModel(model);
    }
    void configureLine(const QByteArray &line); // "address|model"
    void turnOnPrivateCloud()
    {
        settings.setHostedChatEnabled(true);
        settings.setHostedRelayEncrypted(true);
    }

    [[nodiscard]] PreparedRequest prepare(TurnRequest turn = {})
    {
        return TestWait::await(router->prepareRequest(std::move(turn), {}));
    }
    [[nodiscard]] OpenedTurn open(TurnRequest turn = {})
    {
        return TestWait::await(router->openTurn(std::move(turn), {}));
    }
    // The model and the address it would go to, or the words of its refusal.
    [[nodiscard]] QString fate(TurnRequest turn);
    [[nodiscard]] static TurnRequest carrying(SensitiveDataSet data);

    ManualClock clock;
    InMemorySettingsRepository settingsRepository;
    SettingsStore settings{settingsRepository};
    InMemoryKeychainService keychain;
    ProofLedger proofs;
    ScriptedProbes probes;
    ScriptedLocalModel localModel;
    std::map<QString, QStringList> names; // what the resolver knows
    int lookups = 0;
    std::shared_ptr<ScriptedModel> compatible = std::make_shared<ScriptedModel>();
    std::shared_ptr<ScriptedModel> native = std::make_shared<ScriptedModel>();
    std::shared_ptr<ScriptedModel> sealed = std::make_shared<ScriptedModel>();
    Work work{clock};
    AIRequestRouter::Services services; // of the router; start() makes one on them
    std::unique_ptr<AIRequestRouter> router;
    LogCapture log;
};

} // namespace morvane
