#pragma once

#include "ai/contract/AIConfiguration.h"
#include "ai/contract/AIMessage.h"
#include "ai/contract/AITool.h"
#include "network/HttpSession.h"

#include <optional>
#include <vector>

namespace morvane {

// Where a server is, by an address of whatever dialect, and the key that may be told to it.
struct OllamaServer {
    QString baseURL;
    std::optional<QString> apiKey;
};

// The HTTP requests of Ollama's own interface. Each goes to the configured address with a path of its own, so
// that an address of the chat-completions dialect serves as well. All throw ProviderError for an address that
// may not be used. Redirects are followed only to addresses that the person could have entered.
namespace OllamaRequest {

enum class Thinking { off, on };

// The tokens of a conversation that a model keeps in view.
inline constexpr int contextTokens = 16384;

// `model` takes the place of the configured name.
[[nodiscard]] HttpRequest chat(const std::vector<AIMessage> &messages, const AIConfiguration &configuration,
                               const QString &model, const std::vector<AITool> &tools, Thinking thinking);

[[nodiscard]] HttpRequest version(const OllamaServer &server);
[[nodiscard]] HttpRequest capabilities(const OllamaServer &server, const QString &model);
[[nodiscard]] HttpRequest modelList(const OllamaServer &server);
[[nodiscard]] HttpRequest connectionTest(const OllamaServer &server);

} // namespace OllamaRequest

} // namespace morvane
