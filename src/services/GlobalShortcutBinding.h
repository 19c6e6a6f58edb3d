#pragma once

#include <QKeyCombination>
#include <QObject>
#include <QString>

#include <vector>

namespace morvane {

// What a key does while another program has the keyboard.
enum class GlobalShortcut {
    chat, // brings the window to the front
    talk  // is held to talk
};

// Keys that the desktop hands to this program, whoever has the keyboard.
//
// GUI thread. Never blocks for a person: what a desktop answers later comes with changed().
class GlobalShortcutBinding : public QObject {
    Q_OBJECT

public:
    struct Wish {
        GlobalShortcut shortcut = GlobalShortcut::chat;
        QKeyCombination keys;
        QString purpose; // as a desktop shows it to the person
    };

    enum class State {
        off,        // nobody wishes for it
        waiting,    // for the desktop, which may be asking the person
        bound,      // to `keys`
        taken,      // another program has it
        refused,    // by the desktop or by the person
        unavailable // this desktop gives no program a key
    };

    struct Binding {
        State state = State::off;
        QString keys = {}; // of one that is bound, as the desktop calls them

        bool operator==(const Binding &) const = default;
    };

    using QObject::QObject;

    // In place of all former wishes, each on its own: one that can't be had doesn't hold back the others.
    virtual void bind(const std::vector<Wish> &wishes) = 0;
    virtual void release() = 0;
    [[nodiscard]] virtual Binding binding(GlobalShortcut shortcut) const = 0;

    // Whether the person chooses the keys in the desktop's own settings; a wish is only what it begins with.
    [[nodiscard]] virtual bool isChosenByDesktop() const { return false; }
    [[nodiscard]] virtual bool canShowDesktopSettings() const { return false; }
    virtual void showDesktopSettings() {}

Q_SIGNALS:
    void changed();
    // `token` lets a window come to the front on the strength of this press; empty where there is none.
    void pressed(morvane::GlobalShortcut shortcut, const QString &token);
    void released(morvane::GlobalShortcut shortcut);
    // Esc, while it was held.
    void escaped(morvane::GlobalShortcut shortcut);
};

} // namespace morvane
