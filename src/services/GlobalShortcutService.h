#pragma once

#include "services/GlobalShortcutBinding.h"

#include <QObject>

#include <array>
#include <optional>

namespace morvane {

class SettingsStore;

// The keys of the settings, held on the desktop from start to end: one that brings the window to the front,
// and one that is held to talk. Follows the settings. GUI thread.
class GlobalShortcutService final : public QObject {
    Q_OBJECT

public:
    using Binding = GlobalShortcutBinding::Binding;

    // Both outlive this object; without `desktop` no key can be had.
    GlobalShortcutService(SettingsStore &settings, GlobalShortcutBinding *desktop, QObject *parent = nullptr);

    void registerShortcuts();
    void unregisterShortcuts();
    // While a new key is recorded the desktop lets go of the present ones, so that they can be pressed too.
    void setPaused(bool paused);

    // What the settings say; none for no key.
    [[nodiscard]] std::optional<QKeyCombination> chosen(GlobalShortcut shortcut) const;
    void choose(GlobalShortcut shortcut, std::optional<QKeyCombination> keys);

    [[nodiscard]] Binding binding(GlobalShortcut shortcut) const;
    [[nodiscard]] bool isChosenByDesktop() const;
    [[nodiscard]] bool canShowDesktopSettings() const;
    void showDesktopSettings();

Q_SIGNALS:
    void changed(); // of what is chosen or bound
    // Another program has it. Told once, until it could be had or another is chosen.
    void couldNotRegister(const QString &keys);
    void pressed(morvane::GlobalShortcut shortcut, const QString &token);
    void released(morvane::GlobalShortcut shortcut);
    void escaped(morvane::GlobalShortcut shortcut);

private:
    void bind();
    void tellTaken();

    SettingsStore &m_settings;
    GlobalShortcutBinding *const m_desktop; // may be null
    bool m_isRegistered = false;
    bool m_isPaused = false;
    std::array<QString, 2> m_told; // the keys of each that couldNotRegister() told
};

} // namespace morvane
