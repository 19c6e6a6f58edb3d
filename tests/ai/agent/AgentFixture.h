#pragma once

#include "ai/ReplyReading.h"
#include "ai/agent/AgentEvent.h"
#include "ai/contract/AIProvider.h"
#include "ai/tools/ToolFixture.h"

#include <QCoreApplication>

namespace morvane {

// A model that plays what a test wrote: one entry for each round, the last one again and again.
class ScriptedModel final : public AIProvider {
public:
    struct Round {
        std::vector<AIStreamEvent> events;
        std::exception_ptr failure = {};
    };
    struct Request {
        std::vector<AIMessage> messages;
        QStringList tools;
    };

    explicit ScriptedModel(std::vector<Round> rounds)
        : m_rounds(std::move(rounds))
    {}

    AsyncStream<AIStreamEvent> streamReply(std::vector<AIMessage> messages, AIConfiguration,
                                           std::vector<AITool> tools) override
    {
        Request request{std::move(messages), {}};
        for (const AITool &tool : tools)
            request.tools.append(tool.name);
        requests.push_back(std::move(request));
        const Round &round = m_rounds.at(std::min(requests.size(), m_rounds.size()) - 1);
        auto [stream, producer] = AsyncStream<AIStreamEvent>::make();
        // From the event loop, as a server's reply comes.
        QMetaObject::invokeMethod(
            qApp,
            [producer, round]() mutable {
                for (const AIStreamEvent &event : round.events)
                    producer.yield(event);
                if (round.failure)
                    producer.fail(round.failure);
                else
                    producer.finish();
            },
            Qt::QueuedConnection);
        return std::move(stream);
    }

    std::vector<Request> requests;

private:
    std::vector<Round> m_rounds;
};

// The events of one run.
struct PlayedRun : EventsRead<AgentEvent> {
    // What stands on the screen at the end.
    [[nodiscard]] QString shown() const
    {
        QString text;
        for (const AgentEvent &event : events) {
            if (const auto *piece = std::get_if<Agent::Text>(&event))
                text += piece->piece;
            else if (const auto *retraction = std::get_if<Agent::RetractText>(&event))
                text.chop(retraction->count);
        }
        return text;
    }

    // The results of the tools that ran.
    [[nodiscard]] QStringList results() const
    {
        QStringList contents;
        for (const AgentEvent &event : events) {
            if (const auto *finished = std::get_if<Agent::ToolFinished>(&event))
                contents.append(finished->result.content);
        }
        return contents;
    }
};

inline PlayedRun readRun(AsyncStream<AgentEvent> stream)
{
    return TestWait::await(readTask<PlayedRun>(std::move(stream)));
}

} // namespace morvane
