#include "fuzz/Fuzz.h"

#include "documents/RichText.h"

// Any bytes as rich text: what comes of it is no longer than they are, and is text all through.
void morvane::fuzz(QByteArrayView input)
{
    const auto text = RichText::text(input);
    require(!text || text->size() <= input.size());
    require(!text || QString::fromUtf8(text->toUtf8()) == *text);
    require(!text || !text->contains(u'\0'));
}
