#include "view_models/blocks/Prose.h"

#include <QStringList>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

QString Prose::plainText() const
{
    QStringList lines;
    for (qsizetype i = 0; i < parts.size(); ++i) {
        const QString mark = form == Form::bullets   ? u"• "_s
                             : form == Form::numbers ? QString::number(i + 1) + u". "_s
                                                     : QString();
        lines.append(mark + parts[i].text);
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
