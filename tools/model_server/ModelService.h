#pragma once

#include "loopback/AnswerScript.h"
#include "loopback/Server.h"
#include "model_server/ModelList.h"

namespace morvane {

// Speaks the chat-completions dialect, and Ollama's own interface when it is told to.
class ModelService final : public Service {
public:
    struct Settings {
        QByteArray requiredKey; // empty: none
        bool speaksOllama = false;
        QString manner;   // that of Scenarios::refusal()
        ModelList models; // what is listed at first
    };

    ModelService(Settings settings, AnswerScript &script);

    Work answer(Exchange &exchange) override;

    // What is listed now.
    [[nodiscard]] ModelList &models() { return m_settings.models; }

private:
    Work chat(Exchange &exchange);
    [[nodiscard]] QJsonObject modelList() const;
    [[nodiscard]] bool isAllowed(const Request &request) const;

    Settings m_settings;
    AnswerScript &m_script;
};

} // namespace morvane
