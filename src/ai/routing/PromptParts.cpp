#include "ai/routing/PromptParts.h"

#include "ai/prompts/SystemPrompt.h"

namespace morvane {

QString PromptParts::identity() const
{
    return SystemPrompt::identity(instructions ? instructions() : SystemPrompt::defaultPrompt());
}

std::optional<QString> PromptParts::notesBlock() const
{
    const std::optional<QString> block = notes ? notes() : std::nullopt;
    return block && !block->isEmpty() ? block : std::nullopt;
}

} // namespace morvane
