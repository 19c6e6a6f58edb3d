#pragma once

#include "ai/contract/AIConfiguration.h"
#include "ai/private_cloud/SealedPrompt.h"
#include "ai/private_cloud/VeniceE2EESession.h"
#include "network/HttpSession.h"

namespace morvane {

// The request of a sealed turn. The two texts cross the wire sealed; the model's name, the parameters and the
// two public keys don't.
namespace SealedRequest {

// What is folded out of the messages. The system prompt stands in it once, whether or not the messages hold
// it as well.
[[nodiscard]] SealedPrompt prompt(const std::vector<AIMessage> &messages,
                                  const AIConfiguration &configuration, const std::vector<AITool> &tools);

// Throws VeniceE2EESession::Failure (sealFailed), ProviderError for an address that can't be used.
[[nodiscard]] HttpRequest make(const SealedPrompt &prompt, const AIConfiguration &configuration,
                               const VeniceE2EESession &session);

} // namespace SealedRequest

} // namespace morvane
