#pragma once

#include "ai/ReplyReading.h"
#include "ai/providers/OllamaNativeProvider.h"
#include "ai/providers/OpenAICompatibleProvider.h"
#include "support/FakeHttpSession.h"
#include "support/LogCapture.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace morvane {

// Chat completions, or the interface that Ollama has of its own: a provider of each, and how it writes.
struct Dialect {
    const char *name;
    bool isOllama;

    [[nodiscard]] std::unique_ptr<AIProvider> provider(HttpSessionProviding &network) const
    {
        if (isOllama)
            return std::make_unique<OllamaNativeProvider>(network);
        return std::make_unique<OpenAICompatibleProvider>(network);
    }
    [[nodiscard]] QByteArray text(const QByteArray &words) const
    {
        return isOllama ? R"({"message":{"content":")" + words + "\"}}\n"
                        : R"(data: {"choices":[{"delta":{"content":")" + words + "\"}}]}\n\n";
    }
    // The entries of a message's `tool_calls`.
    [[nodiscard]] QByteArray calls(const QByteArray &entries) const
    {
        return isOllama ? R"({"message":{"tool_calls":[)" + entries + "]}}\n"
                        : R"(data: {"choices":[{"delta":{"tool_calls":[)" + entries + "]}}]}\n\n";
    }
    [[nodiscard]] QByteArray end(const QByteArray &reason = "stop") const
    {
        return isOllama ? R"({"done":true,"done_reason":")" + reason + "\"}\n"
                        : R"(data: {"choices":[{"finish_reason":")" + reason + "\"}]}\n\ndata: [DONE]\n\n";
    }
};

inline constexpr Dialect chatCompletions{"ChatCompletions", false};
inline constexpr Dialect ollama{"Ollama", true};

// A scripted session, and what to ask over it.
class ScriptedSessionTest : public testing::Test {
protected:
    [[nodiscard]] QJsonObject lastBody() const
    {
        return QJsonDocument::fromJson(session.requests().back().body).object();
    }

    AIConfiguration configuration = [] {
        AIConfiguration c;
        c.baseURLString = QStringLiteral("https://api.example.com/v1");
        c.model = QStringLiteral(" some-model\t");
        return c;
    }();
    FakeHttpSessionProvider network;
    FakeHttpSession &session = *network.fake;
    LogCapture log;
};

inline std::string dialectName(const testing::TestParamInfo<Dialect> &info)
{
    return info.param.name;
}

} // namespace morvane
