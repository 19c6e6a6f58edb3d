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
    const auto [position, isNew] = m_partials.try_emplace(fragment.index);
    if (isNew)
        m_order.push_back(fragment.index);
    Partial &partial = position->second;
    m_characters += replace(partial.id, fragment.id) + replace(partial.name, fragment.name);
    m_characters += fragment.arguments.size();
    if (m_order.size() > mostToolCalls || m_characters > mostCharacters)
        throw ProviderError(ProviderError::Plain::malformedResponse);
    partial.arguments += fragment.arguments;
}

std::vector<AIToolCall> ToolCallAccumulator::finish() const
{
    std::vector<AIToolCall> calls;
    for (const std::int64_t index : m_order) {
        const Partial &partial = m_partials.at(index);
        if (!partial.name)
            continue;
        QString arguments = Text::trimmed(partial.arguments);
        if (arguments.isEmpty())
            arguments = u"{}"_s;
        calls.push_back({partial.id.value_or(u"call_%1"_s.arg(index)), *partial.name, arguments});
    }
    return calls;
}

} // namespace OpenAIStreamParser

} // namespace morvane
