#include "utils/text/DesktopWords.h"

namespace morvane {

constexpr DesktopWords DesktopWords::original{
    .device = u"Mac",
    .asker = u"macOS",
    .screenSettings = u"System Settings → Privacy & Security → Screen & System Audio Recording",
    .screenPermissionRule = u"macOS only applies Screen Recording permission when an app launches",
    .secretStore = u"Keychain",
    .secretStoreProgram = u"Keychain Access",
    .connectionLister = u"nettop -p",
    .runtimeStopper = u"the llama in the menu bar",
};

constexpr DesktopWords DesktopWords::freedesktop{
    .device = u"computer",
    .asker = u"your desktop",
    .screenSettings = u"your desktop's privacy settings",
    .screenPermissionRule =
        u"Your desktop may only apply the permission to see the screen when an app launches",
    .secretStore = u"keyring",
    .secretStoreProgram = u"your desktop's password manager",
    .connectionLister = u"ss -tnp",
    .runtimeStopper = u"in a terminal: sudo systemctl stop ollama",
};

} // namespace morvane
