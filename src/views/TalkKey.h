#pragma once

#include "views/WindowKeeper.h"

#include <QBasicTimer>

#include <optional>

namespace morvane {

// A key of the window that is held: a shortcut tells when it went down, and this tells when it, or one that
// was held with it, comes up again. The window may lose the keyboard meanwhile, and hear of no key any more.
class TalkKey : public morvane::WindowKeeper {
    Q_OBJECT
    QML_ELEMENT
    // Esc is for this, whatever has the focus.
    Q_PROPERTY(bool takesEscape MEMBER m_takesEscape NOTIFY takesEscapeChanged)

public:
    using WindowKeeper::WindowKeeper;

    // A key that repeats comes up and goes down again at once, and not each of these pairs is known for what
    // it is: only one that stays up for so long was let go.
    static constexpr int repeatPause = 60; // ms

    // The key that the window just had is held from now on.
    Q_INVOKABLE void hold();

    bool eventFilter(QObject *watched, QEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

Q_SIGNALS:
    void takesEscapeChanged();
    void held();
    void letGo();
    void escaped();

private:
    // A layout may name a key otherwise than a shortcut does, so the place on the keyboard counts too.
    struct Key {
        int key = 0;
        quint32 place = 0; // 0: unknown
    };

    void watch() override {}
    void release();
    [[nodiscard]] bool endsHold(const QKeyEvent &event) const;
    [[nodiscard]] bool isEscape(const QKeyEvent &event) const;

    bool m_takesEscape = false;
    Key m_latest;
    std::optional<Key> m_held;
    QBasicTimer m_cameUp;
};

} // namespace morvane
