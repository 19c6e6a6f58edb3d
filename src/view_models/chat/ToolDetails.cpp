#include "view_models/chat/ToolDetails.h"

#include "utils/text/Text.h"
#include "utils/text/UntrustedContent.h"
#include "view_models/chat/ApprovalWords.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Characters. A whole page of the web is not worth keeping eight times in each reply.
constexpr qsizetype longestSent = 2000;
constexpr qsizetype longestReceived = 4000;

QString shortened(const QString &text, qsizetype longest)
{
    const QString kept = Text::prefix(text, longest);
    return kept.size() < text.size() ? kept + u"\n…"_s : text;
}

} // namespace

ToolDetail ToolDetails::of(const AIToolCall &call)
{
    return {.sent = shortened(ApprovalWords::detail(call), longestSent)};
}

ToolDetail ToolDetails::of(const AIToolCall &call, const AIToolResult &result)
{
    const UntrustedContent::Unwrapped content = UntrustedContent::unwrap(result.content);
    ToolDetail detail = of(call);
    if (result.isDeclined)
        return detail; // its outcome says it; the result is advice to the model
    detail.received = shortened(content.text, longestReceived);
    detail.isFromOutside = content.isMarked;
    return detail;
}

} // namespace morvane
