#pragma once

#include "loopback/Exchange.h"

#include <optional>
#include <span>

namespace morvane {

// What the server does with a chat request, chosen by the request's model name. A name ending in "-N" takes
// a number in that place.
struct Scenario {
    QLatin1StringView name;
    QLatin1StringView summary;
    Work (*play)(Exchange &exchange);
};

// A request that a strict service doesn't take, in that service's words.
struct Refusal {
    int status;
    QJsonObject body;
};

namespace Scenarios {

// What comes before any scenario: a server in the manner of a strict cloud service, "cloud", or of llama.cpp,
// "llama", refuses what those refuse. Nothing in any other manner.
[[nodiscard]] std::optional<Refusal> refusal(const QString &manner, const Request &request);

// Replies of a server that keeps to the dialect.
[[nodiscard]] std::span<const Scenario> replies();

// Models that call tools over several rounds.
[[nodiscard]] std::span<const Scenario> agents();

// A model that shows what the application can do, for whoever looks at it first.
[[nodiscard]] std::span<const Scenario> tours();

// Services that refuse part of a request that others take.
[[nodiscard]] std::span<const Scenario> strict();

// Servers that fail, stall, break off or send what no client expects.
[[nodiscard]] std::span<const Scenario> broken();

[[nodiscard]] const Scenario *find(const QString &model);

// The number in the place of "N"; 0 when there is none.
[[nodiscard]] int number(const QString &model);

// The instruction by which the application asks for the rest of a reply begins like this.
inline constexpr QLatin1StringView continueInstruction{"Continue your previous answer exactly"};

// A friendly reply that says where it comes from and echoes a little of the user's message.
[[nodiscard]] QString practiceText(const Request &request);

} // namespace Scenarios

} // namespace morvane
