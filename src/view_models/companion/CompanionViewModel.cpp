#include "view_models/companion/CompanionViewModel.h"

namespace morvane {

CompanionViewModel::CompanionViewModel(Clock &clock, QObject *parent)
    : QObject(parent)
    , m_clock(clock)
{}

bool CompanionViewModel::transition(CompanionState to)
{
    if (!Companion::mayMove(m_state, to))
        return false;
    enter(to);
    return true;
}

void CompanionViewModel::reset()
{
    enter(CompanionState::idle);
}

void CompanionViewModel::flash(CompanionState state, std::chrono::milliseconds duration)
{
    m_flashAlarm.reset();
    if (!transition(state))
        return;
    m_flashAlarm = m_clock.after(duration, [this, state] {
        if (m_state == state)
            enter(CompanionState::idle);
    });
}

void CompanionViewModel::say(const QString &text, std::chrono::milliseconds duration)
{
    m_bubbleText = text;
    Q_EMIT bubbleTextChanged();
    m_bubbleAlarm = m_clock.after(duration, [this] { clearBubble(); });
}

void CompanionViewModel::clearBubble()
{
    if (m_bubbleText.isEmpty())
        return;
    m_bubbleText.clear();
    Q_EMIT bubbleTextChanged();
}

void CompanionViewModel::setHovering(bool hovering)
{
    if (m_isHovering == hovering)
        return;
    m_isHovering = hovering;
    Q_EMIT isHoveringChanged();
    if (hovering && m_state == CompanionState::idle)
        transition(CompanionState::hover);
    else if (!hovering && m_state == CompanionState::hover)
        transition(CompanionState::idle);
}

void CompanionViewModel::enter(CompanionState state)
{
    if (m_state == state)
        return;
    m_state = state;
    Q_EMIT stateChanged();
}

} // namespace morvane
