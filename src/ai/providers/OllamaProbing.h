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

// What came of a question to a server: yes and what it told, no, or nobody was heard. The last says nothing
// about the server, so it is never remembered.
template <typename Told>
struct ProbeAnswer {
    std::optional<Told> told; // nothing from a server that answers otherwise than the interface does
    bool wasHeard = true;     // within the question's own time limit
};

// Questions to a server that may speak the Ollama interface. `baseURL` is the configured address; its path
// and query don't matter. Nothing is thrown but CancelledError. GUI thread.
class OllamaProbing {
public:
    virtual ~OllamaProbing() = default;

    [[nodiscard]] virtual QCoro::Task<ProbeAnswer<QString>> version(QString baseURL,
                                                                    std::stop_token stop) = 0;
    [[nodiscard]] virtual QCoro::Task<ProbeAnswer<QStringList>> capabilities(QString baseURL, QString model,
                                                                             std::stop_token stop) = 0;
    [[nodiscard]] virtual QCoro::Task<ProbeAnswer<std::vector<OllamaModel>>>
    modelList(QString baseURL, std::stop_token stop) = 0;
};

} // namespace morvane
