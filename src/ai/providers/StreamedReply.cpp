#include "ai/providers/StreamedReply.h"

#include "ai/contract/ProviderError.h"
#include "ai/providers/LineJson.h"
#include "ai/providers/ServerWords.h"

namespace morvane {

using namespace Qt::StringLiterals;
namespace Parser = OpenAIStreamParser;
using Parser::tokenLimit;
using Broken = ProviderError::ReplyBroken;

StreamedReply::Progress StreamedReply::add(QByteArrayView line, Events &events)
{
    Progress progress = Progress::goesOn;
    for (Parser::ToolAwareEvent &event : Parser::classify(line)) {
        if (auto *delta = std::get_if<Parser::Delta>(&event)) {
            m_hasContent = true;
            events.yield(AIStream::Text{std::move(delta->text)});
        } else if (const auto *fragment = std::get_if<Parser::ToolCallFragment>(&event)) {
            m_hasContent = true;
            m_accumulator.add(*fragment);
        } else if (const auto *finished = std::get_if<Parser::Finished>(&event)) {
            end(finished->reason);
        } else if (const auto *failed = std::get_if<Parser::Failed>(&event)) {
            throw m_hasContent ? ProviderError(Broken::serverError).quoting(failed->serverWords)
                               : ServerWords::error(failed->status, failed->serverWords);
        } else if (std::holds_alternative<Parser::Reasoned>(event)) {
            m_hasReasoning = true;
        } else if (std::holds_alternative<Parser::Done>(event)) {
            m_isEnded = true;
            progress = Progress::done;
        } else if (!m_hasContent && m_raw.size() < rawBufferLimit) {
            m_raw.append(line).append('\n');
        }
    }
    return progress;
}

void StreamedReply::end(const QString &reason)
{
    m_isEnded = true;
    m_isTruncated = m_isTruncated || reason == tokenLimit;
    if (const auto broken = Parser::brokenBy(reason))
        throw ProviderError(*broken);
}

void StreamedReply::finish(Events &events)
{
    if (m_hasContent && !m_isEnded)
        throw ProviderError(Broken::endedEarly);
    if (!m_hasContent && m_hasReasoning && m_isTruncated)
        throw ProviderError(ProviderError::Plain::limitSpentThinking);
    auto calls = m_accumulator.finish();
    m_hasCalls = !calls.empty();
    if (m_hasCalls)
        events.yield(AIStream::ToolCalls{std::move(calls)});
    if (m_isTruncated)
        events.yield(AIStream::TruncatedByTokenLimit{});
}

std::optional<Parser::Completion> StreamedReply::plainBody() const
{
    try {
        auto completion = Parser::parseBody(LineJson::validUtf8(m_raw));
        if (!completion.isEmpty())
            return completion;
    } catch (const ProviderError &) {
        // No plain body either.
    }
    return std::nullopt;
}

void yieldCompletion(const Parser::Completion &completion, StreamedReply::Events &events)
{
    if (!completion.text.isEmpty())
        events.yield(AIStream::Text{completion.text});
    if (!completion.toolCalls.empty())
        events.yield(AIStream::ToolCalls{completion.toolCalls});
    if (completion.finishReason == tokenLimit)
        events.yield(AIStream::TruncatedByTokenLimit{});
    if (const auto broken = Parser::brokenBy(completion.finishReason.value_or(QString())))
        throw ProviderError(*broken);
}

} // namespace morvane
