#include "view_models/find/FindTerms.h"

#include "utils/text/FoldedText.h"

#include <algorithm>

namespace morvane {

namespace {

constexpr qsizetype mostWords = 8; // as the search over all chats takes
constexpr qsizetype longestQuery = 1000;

} // namespace

FindTerms::FindTerms(const QString &query, Way way)
{
    const QString folded =
        FoldedText(QStringView(query).first(std::min(query.size(), longestQuery))).text().trimmed();
    if (way == Way::words)
        m_needles = folded.split(u' ', Qt::SkipEmptyParts).mid(0, mostWords);
    else if (!folded.isEmpty())
        m_needles = {folded};
}

QList<FindTerms::Find> FindTerms::in(QStringView text) const
{
    const FoldedText folded(text);
    QList<qsizetype> next; // where each needle stands next, -1 where it doesn't
    for (const QString &needle : m_needles)
        next.append(folded.text().indexOf(needle));
    QList<Find> finds;
    qsizetype end = 0;
    while (true) {
        qsizetype first = -1;
        for (qsizetype i = 0; i < next.size(); ++i) {
            if (next[i] >= 0 && next[i] < end)
                next[i] = folded.text().indexOf(m_needles[i], end);
            const bool isNearer =
                next[i] >= 0 && (first < 0 || next[i] < next[first] ||
                                 (next[i] == next[first] && m_needles[i].size() > m_needles[first].size()));
            first = isNearer ? i : first;
        }
        if (first < 0)
            return finds;
        end = next[first] + m_needles[first].size();
        const qsizetype start = folded.originOf(next[first]);
        if (!finds.isEmpty() && start < finds.last().start + finds.last().length)
            continue; // in the second half of a character that is found already
        finds.append({start, folded.originOfEnd(end) - start});
    }
}

} // namespace morvane
