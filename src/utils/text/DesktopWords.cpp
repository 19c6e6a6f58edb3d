#include "utils/text/DesktopWords.h"

namespace morvane {

constexpr DesktopWords DesktopWords::original{
    .device = u"Mac",
    .devices = u"Macs",
    .asker = u"macOS",
    .screenSettings = u"System Settings → Privacy & Security → Screen & System Audio Recording",
    .screenNewStart = u" Either way, quit and reopen MorvaneGPT afterwards so it takes effect.",
    .screenRecheck = u", and it rechecks after every update",
    .screenPermissionRule = u"macOS only applies Screen Recording permission when an app launches",
    .microphoneSettings = u"System Settings → Privacy & Security → Microphone",
    .speechSettings = u"System Settings → Privacy & Security → Speech Recognition",
    .dictationSettings = u"System Settings > Keyboard > Dictation",
    .calendarSettings = u"System Settings → Privacy & Security → Calendars",
    .calendarChooser = u"a default calendar in the Calendar app's settings",
    .shortcutsPlace = u"Shortcuts app",
    .shortcutHung =
        u"Switch to the Shortcuts app and finish it there, or take out the step that asks a question.",
    .speechServersOwner = u"Apple's",
    .secretStore = u"Keychain",
    .secretStoreProgram = u"Keychain Access",
    .unlockers = u"Touch ID, Apple Watch or login password",
    .unlockerSettings = u"System Settings",
    .keyGuard = u"Touch ID",
    .connectionLister = u"nettop -p",
    .runtimeStopper = u"the llama in the menu bar",
    .searcher = u"macOS",
    .searchMissing = u"Its network search is not running.",
    .snapshots = u"Time Machine snapshots",
    .terminal = u"Terminal",
    .ollamaListensToAll = u"launchctl setenv OLLAMA_HOST 0.0.0.0 && killall ollama; ollama serve &",
    .ollamaWithoutService = u"",
};

constexpr DesktopWords DesktopWords::freedesktop{
    .device = u"computer",
    .devices = u"computers",
    .asker = u"your desktop",
    .screenSettings = u"your desktop's privacy settings",
    .screenNewStart = u"",
    .screenRecheck = u"",
    .screenPermissionRule =
        u"Your desktop may only apply the permission to see the screen when an app launches",
    .microphoneSettings = u"your desktop's privacy settings",
    .speechSettings = u"your desktop's privacy settings",
    .dictationSettings = u"your desktop's language settings",
    .calendarSettings = u"your desktop's privacy settings",
    .calendarChooser = u"one in Settings → Abilities",
    .shortcutsPlace = u"Shortcuts folder",
    .shortcutHung = u"Take out the step that asks a question, or that takes long.",
    .speechServersOwner = u"a company's",
    .secretStore = u"keyring",
    .secretStoreProgram = u"your desktop's password manager",
    .unlockers = u"program that asks for your password or fingerprint (a polkit agent)",
    .unlockerSettings = u"your desktop's session settings",
    .keyGuard = u"your password",
    .connectionLister = u"ss -tnp",
    .runtimeStopper = u"in a terminal: sudo systemctl stop ollama",
    .searcher = u"This computer",
    .searchMissing = u"Avahi, the service that finds computers nearby, is not running.",
    .snapshots = u"Snapshots of the disk",
    .terminal = u"a terminal",
    // A file of its own beside what the person may have changed of the service.
    .ollamaListensToAll = u"sudo mkdir -p /etc/systemd/system/ollama.service.d && "
                          u"printf '[Service]\\nEnvironment=OLLAMA_HOST=0.0.0.0\\n' | "
                          u"sudo tee /etc/systemd/system/ollama.service.d/nearby.conf && "
                          u"sudo systemctl daemon-reload && sudo systemctl restart ollama",
    .ollamaWithoutService = u"If Ollama is not a service there, quit it and start it with: "
                            u"OLLAMA_HOST=0.0.0.0 ollama serve",
};

} // namespace morvane
