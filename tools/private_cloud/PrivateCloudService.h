#pragma once

#include "CloudScenarios.h"
#include "CloudState.h"
#include "ServedLists.h"

#include "loopback/AnswerScript.h"
#include "loopback/Server.h"

namespace morvane {

// The private cloud's server: proofs, sealed replies and the list of accepted servers under /v1, and
// POST /go-on for whoever holds a scenario.
class PrivateCloudService final : public Service {
public:
    struct Settings {
        QString list = QStringLiteral("good"); // of ServedLists::kinds()
        QString builtIn;                       // the scenario that the built-in model plays; empty: its own
        QByteArray requiredKey;                // empty: none
    };

    // Throws a runtime_error for a list or a scenario that there isn't.
    PrivateCloudService(Settings settings, AnswerScript &script);

    Work answer(Exchange &exchange) override;

private:
    Work attest(Exchange &exchange);
    Work chat(Exchange &exchange);
    Work goOn(Exchange &exchange);
    [[nodiscard]] std::optional<CloudScenario> scenarioOf(const QString &model) const;

    ServedLists m_lists;
    QString m_builtIn;
    QByteArray m_requiredKey;
    AnswerScript &m_script;
    CloudState m_state;
};

} // namespace morvane
