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

    // A named fragment with another id than its index has begins a call of its own: some servers give every
    // call the index 0. Throws ProviderError past this limit or `mostToolCalls`.
    void add(const ToolCallFragment &fragment);

    // The calls in the order in which their indexes came. One that was never named is dropped.
    [[nodiscard]] std::vector<AIToolCall> finish() const;

private:
    struct Partial {
        std::int64_t index = 0;
        std::optional<QString> id;
        std::optional<QString> name;
        QString arguments;
    };

    [[nodiscard]] Partial &partialFor(const ToolCallFragment &fragment);

    std::vector<Partial> m_partials;               // first come first
    std::map<std::int64_t, std::size_t> m_current; // the last one of each index
    qsizetype m_characters = 0;
};

} // namespace OpenAIStreamParser

} // namespace morvane
