#include "fuzz/Fuzz.h"
#include "fuzz/LiteralPatterns.h"

#include "services/PageText.h"

// Any bytes as a page: what the scanners read is what the patterns read.
void morvane::fuzz(QByteArrayView input)
{
    const QString html = PageText::decoded(input.toByteArray());
    const QString title = PageText::title(html);
    const QString text = PageText::text(html);
    static_cast<void>(PageText::isBotWall(title, text));
    constexpr qsizetype comparable = 4096; // longer ones may hit the matcher's own limits
    require(html.size() > comparable ||
            (title == LiteralPatterns::title(html) && text == LiteralPatterns::text(html)));
}
