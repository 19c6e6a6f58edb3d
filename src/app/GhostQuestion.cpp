#include "app/GhostQuestion.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString buttonOf(GhostQuestion::Answer answer)
{
    switch (answer) {
    case GhostQuestion::Answer::drop:
        return u"Drop"_s;
    case GhostQuestion::Answer::keep:
        return u"Keep"_s;
    case GhostQuestion::Answer::cancel:
        return u"Cancel"_s;
    }
    return {};
}

} // namespace

QStringList GhostQuestion::buttons() const
{
    QStringList names;
    for (const Answer answer : answers)
        names += buttonOf(answer);
    return names;
}

GhostQuestion GhostQuestion::ask(bool isLocked)
{
    const QString title = u"Drop this Ghost chat?"_s;
    const QString lead = u"It was never saved, so it goes when you leave it. "_s;
    if (isLocked)
        return {title, lead + u"To keep it, cancel and unlock first."_s, {Answer::drop, Answer::cancel}};
    return {
        title, lead + u"Keep it first if you want it back."_s, {Answer::drop, Answer::keep, Answer::cancel}};
}

} // namespace morvane
