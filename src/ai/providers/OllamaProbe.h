#pragma once

#include "ai/providers/RequestStop.h"
#include "async/Clock.h"
#include "network/HttpSession.h"

#include <QJsonObject>

namespace morvane {

// One question to a server that may speak Ollama's own interface. It has its request's timeout for the whole
// answer: a server that sends a byte now and then must not hold up a turn.
class OllamaProbe {
public:
    // The time runs from here.
    OllamaProbe(std::shared_ptr<HttpSession> session, HttpRequest request, Clock &clock,
                std::stop_token stop);

    // The object that a good status came with; nothing for every other answer and for none. Throws
    // CancelledError only, once the `stop` given above is triggered. No probe has no answer.
    [[nodiscard]] static QCoro::Task<std::optional<QJsonObject>> answer(std::shared_ptr<OllamaProbe> probe);

private:
    std::shared_ptr<HttpSession> m_session;
    HttpRequest m_request;
    std::stop_token m_stop;
    RequestStop m_requestStop;
    std::unique_ptr<Alarm> m_limit;
};

} // namespace morvane
