#pragma once

#include "ai/local/LocalServer.h"

#include <QCoroTask>

#include <exception>
#include <functional>
#include <optional>
#include <stop_token>

namespace morvane {

class Clock;

// The server has a model of the registry fetched.
namespace ModelPull {

// As one line of the reply says it, of the layer that is on its way.
struct Progress {
    qint64 done = 0;
    std::optional<qint64> total;
    std::optional<int> percent; // 0 to 100, cut off and not rounded

    bool operator==(const Progress &) const = default;
};
using OnProgress = std::function<void(const Progress &)>;

// The server's own key is gone, without which the registry gives it nothing.
class MissingIdentityKey final : public std::exception {
public:
    [[nodiscard]] const char *what() const noexcept override
    {
        return "the server's identity key is missing";
    }
};

// Returns when the server says that the model is there. A connection that breaks is made anew a few times;
// the server goes on from where it was, as it does after a stop. Throws LocalSetupError with the server's
// reason, MissingIdentityKey, TransportError, CancelledError. `clock` outlives the task.
[[nodiscard]] QCoro::Task<> run(LocalServer server, QString model, OnProgress onProgress, Clock *clock,
                                std::stop_token stop);

// What a line tells; nothing when it is about something else. Throws as above for one with an error.
[[nodiscard]] std::optional<Progress> read(const QJsonObject &line, const QString &model);

} // namespace ModelPull

} // namespace morvane
