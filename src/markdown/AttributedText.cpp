#include "markdown/AttributedText.h"

namespace morvane {

void AttributedText::append(QStringView piece, Formats formats, const QString &link)
{
    if (piece.isEmpty())
        return;
    const qsizetype start = text.size();
    text.append(piece);
    if (!formats && link.isEmpty())
        return;
    if (!runs.isEmpty()) {
        Run &last = runs.last();
        if (last.start + last.length == start && last.formats == formats && last.link == link) {
            last.length += piece.size();
            return;
        }
    }
    runs.append({start, piece.size(), formats, link});
}

} // namespace morvane
