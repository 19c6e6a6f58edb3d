#pragma once

#include <QCoroTask>
#include <QString>
#include <QStringList>

#include <optional>
#include <stop_token>
#include <vector>

namespace morvane {

// A model that a server lists.
struct OllamaModel {
    QString name;
    bool runsElsewhere = false; // the server passes it on to a service on the internet

    bool operator==(const OllamaModel &) const = default;
};

// Questions to a server that may speak the Ollama interface. `baseURL` is the configured address; its path
// and query don't matter. No answer, within the question's own time limit, means that the server didn't give
// one of that interface; nothing is thrown but CancelledError. GUI thread.
class OllamaProbing {
public:
    virtual ~OllamaProbing() = default;

    [[nodiscard]] virtual QCoro::Task<std::optional<QString>> version(QString baseURL,
                                                                      std::stop_token stop) = 0;
    [[nodiscard]] virtual QCoro::Task<std::optional<QStringList>> capabilities(QString baseURL, QString model,
                                                                               std::stop_token stop) = 0;
    [[nodiscard]] virtual QCoro::Task<std::optional<std::vector<OllamaModel>>>
    modelList(QString baseURL, std::stop_token stop) = 0;
};

} // namespace morvane
