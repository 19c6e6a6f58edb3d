#pragma once

#include "async/Clock.h"
#include "view_models/companion/CompanionState.h"

#include <QObject>
#include <QString>

#include <chrono>
#include <memory>

namespace morvane {

// The small state machine behind the ghost. The chat drives it; the view draws it.
class CompanionViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(morvane::Companion::State state READ state NOTIFY stateChanged)
    Q_PROPERTY(QString bubbleText READ bubbleText NOTIFY bubbleTextChanged)
    Q_PROPERTY(bool isHovering READ isHovering WRITE setHovering NOTIFY isHoveringChanged)

public:
    explicit CompanionViewModel(Clock &clock, QObject *parent = nullptr);

    [[nodiscard]] CompanionState state() const { return m_state; }
    [[nodiscard]] const QString &bubbleText() const { return m_bubbleText; }
    [[nodiscard]] bool isHovering() const { return m_isHovering; }

    // The only guarded way to change state; false when the move is refused.
    bool transition(CompanionState to);
    // Straight to idle, whatever the state: a turn has ended or was stopped.
    void reset();
    // A state for a short time, then idle, unless something else changed it meanwhile.
    void flash(CompanionState state, std::chrono::milliseconds duration);
    // A speech bubble, in place of any former one.
    void say(const QString &text, std::chrono::milliseconds duration);
    void clearBubble();
    void setHovering(bool hovering);

Q_SIGNALS:
    void stateChanged();
    void bubbleTextChanged();
    void isHoveringChanged();

private:
    void enter(CompanionState state);

    Clock &m_clock;
    CompanionState m_state = CompanionState::idle;
    QString m_bubbleText;
    bool m_isHovering = false;
    std::unique_ptr<Alarm> m_bubbleAlarm;
    std::unique_ptr<Alarm> m_flashAlarm;
};

} // namespace morvane
