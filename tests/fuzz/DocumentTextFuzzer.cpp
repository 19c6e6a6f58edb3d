#include "fuzz/Fuzz.h"

#include "documents/DocumentText.h"
#include "utils/text/Text.h"

// Any bytes as a plain file behind a byte that says how much of it is wanted: a cut is a beginning of the
// text, not longer than wanted, and not shorter than it needs to be. What is enough is asked of the longest
// cut: marks that begin a text are told apart by the script that comes behind them, so a beginning alone can
// have fewer characters than it has in the whole.
void morvane::fuzz(QByteArrayView input)
{
    const qsizetype limit = input.isEmpty() ? 0 : static_cast<uchar>(input.front());
    const QString text = Text::trimmed(DocumentText::decoded(input.isEmpty() ? input : input.sliced(1)));
    const DocumentText::Cut cut = DocumentText::cut(text, limit);
    const QString longest = Text::prefix(text, limit);
    require(text.startsWith(cut.text));
    require(!Text::hasAtLeast(cut.text, limit + 1));
    require(cut.wasTruncated == Text::hasAtLeast(text, limit + 1));
    require(!cut.wasTruncated || longest.startsWith(cut.text));
    require(!cut.wasTruncated || cut.text.size() >= Text::prefix(longest, limit * 4 / 5).size());
}
