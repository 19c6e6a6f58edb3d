#pragma once

#include "services/GlobalShortcutBinding.h"

#include <QBasicTimer>
#include <QByteArray>

#include <memory>
#include <optional>

namespace morvane {

// Keys that an X server hands to this program alone, whatever has the keyboard (grabs of its core protocol).
// A connection of its own is open while a key is wished for, and silent until one of them is pressed or the
// keyboard gets another map, when they are grabbed anew. GUI thread.
class X11GlobalShortcuts final : public GlobalShortcutBinding {
    Q_OBJECT
public:
    // A key that repeats comes up and goes down again at once: only one that stays up for so long was let go.
    static constexpr int repeatPause = 60; // ms

    // Empty for the display of the environment.
    explicit X11GlobalShortcuts(QByteArray display = {}, QObject *parent = nullptr);
    ~X11GlobalShortcuts() override;

    void bind(const std::vector<Wish> &wishes) override;
    void release() override;
    [[nodiscard]] Binding binding(GlobalShortcut shortcut) const override;

    void timerEvent(QTimerEvent *event) override;

private:
    struct Server;
    struct Grab {
        Wish wish;
        State state = State::waiting;
        std::vector<std::uint8_t> codes = {}; // of the key, on the present map
        std::uint16_t modifiers = 0;          // as the server counts them
    };

    [[nodiscard]] bool connectToServer();
    void grabAll();
    void grab(Grab &grab);
    void ungrab(const Grab &grab);
    void hear();
    void keyWentDown(std::uint8_t code, std::uint16_t modifiers, std::uint32_t time);
    void keyCameUp(std::uint8_t code);
    void letGo();
    void serverLeft();

    struct Held {
        GlobalShortcut shortcut;
        std::uint8_t code;
    };

    const QByteArray m_display;
    std::unique_ptr<Server> m_server; // while there are wishes
    std::vector<Grab> m_grabs;
    std::optional<Held> m_held;
    QBasicTimer m_cameUp;
};

} // namespace morvane
