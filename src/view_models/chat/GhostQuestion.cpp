#include "view_models/chat/GhostQuestion.h"

namespace morvane {

using namespace Qt::StringLiterals;

GhostQuestion GhostQuestion::leaving(bool isLocked)
{
    const QString title = u"Drop this Ghost chat?"_s;
    const QString lead = u"It was never saved, so it goes when you leave it. "_s;
    if (isLocked)
        return {title,
                lead + u"To keep it, cancel and unlock first."_s,
                {Answer::drop, Answer::cancel},
                {u"Drop"_s, u"Cancel"_s}};
    return {title,
            lead + u"Keep it first if you want it back."_s,
            {Answer::drop, Answer::keep, Answer::cancel},
            {u"Drop"_s, u"Keep"_s, u"Cancel"_s}};
}

GhostQuestion GhostQuestion::saving()
{
    return {u"Save this Ghost chat?"_s,
            u"It joins your other chats and is saved with them from now on. If you stay, nothing of it is "
            u"saved."_s,
            {Answer::keep, Answer::cancel},
            {u"Save Chat"_s, u"Stay in Ghost Mode"_s}};
}

} // namespace morvane
