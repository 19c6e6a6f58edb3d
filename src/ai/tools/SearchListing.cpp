#include "ai/tools/SearchListing.h"

#include <QStringList>

namespace morvane {

using namespace Qt::StringLiterals;

QString SearchListing::of(const std::vector<WebAccessing::SearchResult> &results, Images images)
{
    QStringList entries;
    for (const WebAccessing::SearchResult &result : results) {
        QString entry = QString::number(entries.size() + 1) + u". "_s + result.title + u"\n   "_s +
                        result.url + u"\n   "_s + result.snippet;
        if (images == Images::shown && result.thumbnailURL)
            entry += u"\n   image: "_s + *result.thumbnailURL;
        entries.append(entry);
    }
    return entries.join(u'\n');
}

} // namespace morvane
