#pragma once

#include "ai/providers/OpenAIStreamParser.h"

#include <map>

namespace morvane {

namespace OpenAIStreamParser {

// Puts the tool calls of one streamed reply together from their fragments.
class ToolCallAccumulator {
public:
    // UTF-16 units of all calls together, so that a stream of arguments without end comes to one.
    static constexpr qsizetype mostCharacters = 4 * 1024 * 1024;

    // Throws ProviderError::malformedResponse past this limit or `mostToolCalls`.
    void add(const ToolCallFragment &fragment);

    // The calls in the order in which their indexes came. One that was never named is dropped.
    [[nodiscard]] std::vector<AIToolCall> finish() const;

private:
    struct Partial {
        std::optional<QString> id;
        std::optional<QString> name;
        QString arguments;
    };

    std::map<std::int64_t, Partial> m_partials;
    std::vector<std::int64_t> m_order; // indexes, first come first
    qsizetype m_characters = 0;
};

} // namespace OpenAIStreamParser

} // namespace morvane
