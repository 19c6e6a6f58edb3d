#pragma once

#include "ai/contract/AIProvider.h"
#include "ai/contract/ProviderError.h"

#include <QCoreApplication>

namespace morvane {

// A model that plays what a test wrote: one entry for each round, the last one again and again. It keeps what
// it was asked.
class ScriptedModel final : public AIConnectionTesting {
public:
    struct Round {
        std::vector<AIStreamEvent> events;
        std::optional<ProviderError> failure; // behind them
    };
    struct Request {
        std::vector<AIMessage> messages;
        AIConfiguration configuration;
        std::vector<AITool> tools;
    };

    explicit ScriptedModel(std::vector<Round> played = {{{AIStream::Text{QStringLiteral("reply")}}}})
        : rounds(std::move(played))
    {}

    AsyncStream<AIStreamEvent> streamReply(std::vector<AIMessage> messages, AIConfiguration configuration,
                                           std::vector<AITool> tools) override
    {
        requests.push_back({std::move(messages), std::move(configuration), std::move(tools)});
        const Round &round = rounds.at(std::min(requests.size(), rounds.size()) - 1);
        auto [stream, producer] = AsyncStream<AIStreamEvent>::make();
        // From the event loop, as a server's reply comes.
        QMetaObject::invokeMethod(
            qApp,
            [producer, round]() mutable {
                for (const AIStreamEvent &event : round.events)
                    producer.yield(event);
                if (round.failure)
                    producer.fail(std::make_exception_ptr(*round.failure));
                else
                    producer.finish();
            },
            Qt::QueuedConnection);
        return std::move(stream);
    }
    QCoro::Task<QString> testConnection(AIConfiguration, std::stop_token) override { co_return QString(); }
    QCoro::Task<ReplyTrial> tryReply(AIConfiguration, std::vector<AITool>, std::stop_token) override
    {
        co_return ReplyTrial();
    }

    std::vector<Round> rounds;
    std::vector<Request> requests;
};

} // namespace morvane
