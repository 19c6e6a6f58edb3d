#pragma once

#include "ai/contract/AIConfiguration.h"
#include "ai/contract/AIMessage.h"
#include "ai/contract/AITool.h"
#include "ai/providers/ChatSpelling.h"
#include "network/HttpSession.h"

#include <QJsonArray>

#include <vector>

namespace morvane {

// The HTTP request of one chat completion.
namespace ChatCompletionRequest {

enum class Form { whole, streamed };

// Throws ProviderError for an address that may not be used. A redirect is followed only to an address that
// the user could have entered.
[[nodiscard]] HttpRequest make(const std::vector<AIMessage> &messages, const AIConfiguration &configuration,
                               const std::vector<AITool> &tools, Form form,
                               const ChatSpelling &spelling = {});

// Tools as a model is told of them.
[[nodiscard]] QJsonArray toolObjects(const std::vector<AITool> &tools);

} // namespace ChatCompletionRequest

} // namespace morvane
