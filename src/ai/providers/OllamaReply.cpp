#include "ai/providers/OllamaReply.h"

#include "ai/contract/ProviderError.h"
#include "ai/providers/OllamaChunk.h"
#include "ai/providers/ToolCallAccumulator.h"
#include "utils/log/Log.h"

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = ProviderError::Plain;

ReplyLines::Progress OllamaReply::add(QByteArrayView line, Events &events)
{
    auto chunk = OllamaChunk::parse(line);
    if (!chunk)
        return ReplyLines::Progress::goesOn;
    if (chunk->errorMessage) {
        Log::error(Log::Category::AIProvider, "Native Ollama stream error: %s"_L1, {*chunk->errorMessage});
        throw ProviderError(ProviderError::ModelError{*chunk->errorMessage});
    }
    m_hasThought = m_hasThought || chunk->isThinking;
    if (chunk->isThinking)
        events.yield(AIStream::Thinking{});
    if (!chunk->text.isEmpty()) {
        m_hasText = true;
        events.yield(AIStream::Text{std::move(chunk->text)});
    }
    gather(std::move(chunk->toolCalls));
    if (!chunk->done)
        return ReplyLines::Progress::goesOn;
    m_isDone = true;
    m_doneReason = chunk->doneReason;
    return ReplyLines::Progress::done;
}

void OllamaReply::finish(Events &events)
{
    const bool isEmpty = !m_hasText && m_calls.empty();
    if (!isEmpty && !m_isDone)
        throw ProviderError(ProviderError::ReplyBroken::endedEarly);
    m_hasCalls = !m_calls.empty();
    if (m_hasCalls)
        events.yield(AIStream::ToolCalls{std::move(m_calls)});
    if (m_doneReason == "length"_L1)
        events.yield(AIStream::TruncatedByTokenLimit{});
    if (isEmpty && m_hasThought && m_doneReason == "length"_L1)
        throw ProviderError(Plain::limitSpentThinking);
    if (isEmpty)
        throw ProviderError(Plain::emptyResponse);
}

// Calls without an id are numbered through the whole reply, since servers spread them over several lines and
// each result is matched to its call by the id.
void OllamaReply::gather(std::vector<AIToolCall> calls)
{
    for (AIToolCall &call : calls) {
        if (call.id.isEmpty())
            call.id = u"call_%1"_s.arg(m_calls.size());
        m_callCharacters += call.id.size() + call.name.size() + call.argumentsJSON.size();
        m_calls.push_back(std::move(call));
        if (m_calls.size() > OpenAIStreamParser::mostToolCalls)
            throw ProviderError(Plain::tooManyCalls);
        if (m_callCharacters > OpenAIStreamParser::ToolCallAccumulator::mostCharacters)
            throw ProviderError(Plain::replyTooLarge);
    }
}

} // namespace morvane
