#pragma once

#include "ModelList.h"
#include "loopback/Exchange.h"

namespace morvane {

// What an Ollama server answers besides chats: its version, its models, and the pull of a new one.
namespace OllamaInterface {

// False for an address that isn't one of these; nothing is sent then.
[[nodiscard]] bool answers(const Request &request);
Work answer(Exchange &exchange, ModelList &models);

// Why a model of this list can't take the request; nothing when it can.
[[nodiscard]] std::optional<QString> objection(const Request &request, const ModelList &models);

} // namespace OllamaInterface

} // namespace morvane
