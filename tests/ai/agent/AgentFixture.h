#pragma once

#include "ai/ReplyReading.h"
#include "ai/ScriptedModel.h"
#include "ai/agent/AgentEvent.h"
#include "ai/tools/ToolFixture.h"

namespace morvane {

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
