#include "ai/routing/PromptParts.h"

#include "utils/Product.h"

using namespace Qt::StringLiterals;

namespace {

QString defaultInstructions()
{
    return u"You are "_s + QString(Product::name) +
           u", a private AI assistant on the user's Mac. You are helpful, calm and concise, and you respect "
           u"the user's privacy. You do not claim to see the user's screen, applications, windows, or files "
           u"unless the user has explicitly provided that content in this conversation. If asked about "
           u"something on the user's screen that was not provided, explain that you can only see what the "
           u"user shares with you."_s;
}

} // namespace

QString PromptParts::identity() const
{
    return (instructions ? instructions() : defaultInstructions()) + u"\n\nYour name is "_s +
           QString(Product::name) + u"."_s;
}

std::optional<QString> PromptParts::notesBlock() const
{
    const std::optional<QString> block = notes ? notes() : std::nullopt;
    return block && !block->isEmpty() ? block : std::nullopt;
}

QString PromptParts::assembled(const std::vector<AITool> &tools,
                               const std::optional<QString> &notesBlock) const
{
    QString prompt = identity();
    if (rules)
        prompt += u"\n\n"_s + rules(tools);
    if (notesBlock)
        prompt += u"\n\n"_s + *notesBlock;
    return prompt;
}
