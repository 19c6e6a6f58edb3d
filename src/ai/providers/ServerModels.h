#pragma once

#include "ai/contract/AIConfiguration.h"
#include "network/HttpSession.h"

#include <QCoroTask>
#include <QStringList>

#include <stop_token>

namespace morvane {

// The models that a server of the chat-completions dialect offers ("GET …/models"), for a person to pick
// from. Ollama servers answer it as well.
namespace ServerModels {

// At most so many names are kept, each of at most 200 characters.
inline constexpr qsizetype mostNames = 2'000;

// Each name once, in order. Waits 20 seconds at most. Throws ProviderError; `malformedResponse` when the
// answer is no list. `network` outlives the task.
[[nodiscard]] QCoro::Task<QStringList> list(HttpSessionProviding *network, AIConfiguration configuration,
                                            std::stop_token stop);

// The names in a response body; nothing when it is no list of models.
[[nodiscard]] std::optional<QStringList> parse(QByteArrayView body);

} // namespace ServerModels

} // namespace morvane
