#include "view_models/chat/QuickAction.h"

namespace morvane {

using namespace Qt::StringLiterals;

QString QuickActions::labelOf(Action action)
{
    switch (action) {
    case Action::summarize:
        return u"Summarize"_s;
    case Action::explain:
        return u"Explain"_s;
    case Action::rewrite:
        return u"Rewrite"_s;
    case Action::draftReply:
        return u"Draft a reply"_s;
    case Action::extractActions:
        return u"Extract action items"_s;
    }
    return {};
}

QString QuickActions::instructionOf(Action action)
{
    switch (action) {
    case Action::summarize:
        return u"Summarize this concisely."_s;
    case Action::explain:
        return u"Explain this in plain language."_s;
    case Action::rewrite:
        return u"Rewrite this to be clearer and more polished, keeping the original meaning."_s;
    case Action::draftReply:
        return u"Draft a thoughtful reply to this."_s;
    case Action::extractActions:
        return u"Extract the action items from this as a checklist."_s;
    }
    return {};
}

} // namespace morvane
