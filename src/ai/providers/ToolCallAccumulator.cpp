#include "ai/providers/ToolCallAccumulator.h"

#include "ai/contract/ProviderError.h"
#include "utils/text/Text.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace OpenAIStreamParser {

namespace {

// The last text that says something wins.
qsizetype replace(std::optional<QString> &stored, const std::optional<QString> &arrived)
{
    if (!arrived || arrived->isEmpty())
        return 0;
    stored = arrived;
    return arrived->size();
}

} // namespace

void ToolCallAccumulator::add(const ToolCallFragment &fragment)
{
    Partial &partial = partialFor(fragment);
    m_characters += replace(partial.id, fragment.id) + replace(partial.name, fragment.name);
    m_characters += fragment.arguments.size();
    if (m_partials.size() > mostToolCalls)
        throw ProviderError(ProviderError::Plain::tooManyCalls);
    if (m_characters > mostCharacters)
        throw ProviderError(ProviderError::Plain::replyTooLarge);
    partial.arguments += fragment.arguments;
}

ToolCallAccumulator::Partial &ToolCallAccumulator::partialFor(const ToolCallFragment &fragment)
{
    const auto says = [](const std::optional<QString> &text) { return text && !text->isEmpty(); };
    const auto known = m_current.find(fragment.index);
    if (known != m_current.end()) {
        Partial &partial = m_partials[known->second];
        if (!partial.id || !says(fragment.id) || !says(fragment.name) || fragment.id == partial.id)
            return partial;
    }
    m_current[fragment.index] = m_partials.size();
    m_partials.push_back({.index = fragment.index});
    return m_partials.back();
}

std::vector<AIToolCall> ToolCallAccumulator::finish() const
{
    std::vector<AIToolCall> calls;
    for (const Partial &partial : m_partials) {
        if (!partial.name)
            continue;
        QString arguments = Text::trimmed(partial.arguments);
        if (arguments.isEmpty())
            arguments = u"{}"_s;
        calls.push_back({partial.id.value_or(u"call_%1"_s.arg(partial.index)), *partial.name, arguments});
    }
    return calls;
}

} // namespace OpenAIStreamParser

} // namespace morvane
