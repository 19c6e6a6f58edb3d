#include "fuzz/Fuzz.h"

#include "documents/DocumentText.h"
#include "utils/text/Text.h"

// Any bytes as a plain file behind a byte that says how much of it is wanted: a cut is a beginning of the
// text, not longer than wanted, and not shorter than it needs to be.
void morvane::fuzz(QByteArrayView input)
{
    const qsizetype limit = input.isEmpty() ? 0 : static_cast<uchar>(input.front());
    const QString text = Text::trimmed(DocumentText::decoded(input.isEmpty() ? input : input.sliced(1)));
    const DocumentText::Cut cut = DocumentText::cut(text, limit);
    require(text.startsWith(cut.text));
    require(!Text::hasAtLeast(cut.text, limit + 1));
    require(cut.wasTruncated == Text::hasAtLeast(text, limit + 1));
    require(!cut.wasTruncated || Text::hasAtLeast(cut.text, limit * 4 / 5));
}
