#include "fuzz/Fuzz.h"

#include "services/PageText.h"
#include "utils/text/Text.h"

using namespace Qt::StringLiterals;

// Any bytes as a page: what is read of it is no longer than it, and lines of words with single blanks.
void morvane::fuzz(QByteArrayView input)
{
    const QString html = PageText::decoded(input.toByteArray());
    const QString title = PageText::title(html);
    const QString text = PageText::text(html);
    static_cast<void>(PageText::isBotWall(title, text));
    require(title.size() <= html.size() && text.size() <= html.size());
    require(title == Text::trimmed(title) && text == Text::trimmed(text));
    require(!text.contains(u"\n\n"_s) && !text.contains(u"  "_s));
}
