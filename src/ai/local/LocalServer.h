#pragma once

#include "ai/local/ServerModel.h"
#include "network/HttpSession.h"

#include <QCoroTask>
#include <QUrl>

#include <chrono>
#include <cstdint>
#include <optional>
#include <stop_token>

namespace morvane {

// Questions to the model server on this machine. A value that each task keeps for itself; `network` outlives
// them all.
struct LocalServer {
    static constexpr std::chrono::milliseconds probeTimeout{3'000};

    HttpSessionProviding *network = nullptr;
    QUrl origin;

    [[nodiscard]] std::shared_ptr<HttpSession> session() const;
    // A body makes it a POST, unless a method is named.
    [[nodiscard]] HttpRequest request(const QString &path, const std::optional<QJsonObject> &body = {}) const;

    // What it has; nothing when nobody answers there as such a server does. Throws CancelledError only.
    [[nodiscard]] static QCoro::Task<std::optional<std::vector<ServerModel>>> models(LocalServer server,
                                                                                     std::stop_token stop);

    // Bytes of memory that the loaded models take; nothing when it doesn't tell. Throws CancelledError only.
    [[nodiscard]] static QCoro::Task<std::optional<std::uint64_t>> memoryInUse(LocalServer server,
                                                                               std::stop_token stop);

    // Deletes a model. Throws LocalSetupError, CancelledError.
    [[nodiscard]] static QCoro::Task<> remove(LocalServer server, QString model, std::stop_token stop);
};

} // namespace morvane
