#include "view_models/blocks/Prose.h"

#include <QStringList>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

QString Prose::plainText() const
{
    QStringList lines;
    for (qsizetype i = 0; i < parts.size(); ++i) {
        if (marks.isEmpty()) {
            lines.append(parts[i].text);
            continue;
        }
        const Mark &mark = marks[i];
        lines.append(QString(qsizetype{2} * mark.depth, u' ') + mark.sign + u' ' + parts[i].text);
    }
    return lines.join(u'\n');
}

bool Prose::hasLinks() const
{
    const auto isLink = [](const AttributedText::Run &run) { return !run.link.isEmpty(); };
    return std::any_of(parts.begin(), parts.end(), [&isLink](const AttributedText &part) {
        return std::any_of(part.runs.begin(), part.runs.end(), isLink);
    });
}

} // namespace morvane
