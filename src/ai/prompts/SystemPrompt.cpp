#include "ai/prompts/SystemPrompt.h"

#include "ai/prompts/PromptTexts.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString blankLine = u"\n\n"_s;

bool offers(const std::vector<AITool> &tools, QLatin1StringView name)
{
    return std::any_of(tools.begin(), tools.end(), [name](const AITool &tool) { return tool.name == name; });
}

} // namespace

QString SystemPrompt::defaultPrompt()
{
    return PromptTexts::defaultInstructions.toString().arg(Product::name, DesktopWords::here().device);
}

QString SystemPrompt::identity(const QString &instructions)
{
    return instructions + blankLine + u"Your name is "_s + Product::name + u'.';
}

QString SystemPrompt::toolInstructions(const std::vector<AITool> &tools)
{
    const bool readsLinks = offers(tools, "read_web_page"_L1);
    const bool addsEvents = offers(tools, "create_calendar_event"_L1);
    const QStringView things =
        addsEvents ? PromptTexts::thingsBesidesCalendar : PromptTexts::thingsWithCalendar;

    QStringList rules{PromptTexts::honesty.toString(), PromptTexts::untrustedContent.toString(),
                      (readsLinks ? PromptTexts::linksReadable : PromptTexts::linksUnreadable).toString()};
    if (offers(tools, "search_web"_L1))
        rules.append(PromptTexts::search.toString());
    rules.append(PromptTexts::cannotAdd.toString().arg(things));
    rules.append(PromptTexts::language.toString());
    if (!offers(tools, "look_at_screen"_L1))
        rules.append(PromptTexts::screen.toString());
    rules.append(PromptTexts::formatting.toString());
    return rules.join(blankLine);
}

QString SystemPrompt::ofTurn(const QString &identity, const std::vector<AITool> &tools,
                             const std::optional<QString> &memoryBlock)
{
    const QString prompt = identity + blankLine + toolInstructions(tools);
    return memoryBlock && !memoryBlock->isEmpty() ? prompt + blankLine + *memoryBlock : prompt;
}

} // namespace morvane
