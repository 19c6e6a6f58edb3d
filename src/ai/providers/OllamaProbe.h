#pragma once

#include "network/HttpSession.h"

#include <QJsonObject>

#include <optional>

namespace morvane {

// One question to a server that may speak Ollama's own interface. Its request has a limit for the whole
// answer: a server that sends a byte now and then must not hold up a turn.
struct OllamaProbe {
    struct Answer {
        std::optional<QJsonObject> object; // that a good status came with
        bool wasHeard = false;             // false: nobody answered, and a moment later somebody may
    };

    std::shared_ptr<HttpSession> session;
    HttpRequest request;

    // Throws CancelledError only, once `stop` is triggered. No probe has no answer.
    [[nodiscard]] static QCoro::Task<Answer> answer(std::optional<OllamaProbe> probe, std::stop_token stop);
};

} // namespace morvane
