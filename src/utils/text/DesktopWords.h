#pragma once

#include <QStringView>

namespace morvane {

// What is called differently on each desktop. The texts were worded for the original one; a text that names
// the device, its programs or its places takes the name from here, so that it reads as made for the desktop
// at hand.
struct DesktopWords {
    QStringView device;         // follows "this", "This" and "your"
    QStringView devices;        // follows "capable" and "desktop"
    QStringView asker;          // who asks for a permission
    QStringView screenSettings; // where the screen's permission is given
    QStringView screenNewStart; // what has to follow before it holds; a sentence after a space, or nothing
    QStringView screenRecheck;  // when else it ends; goes on with the rule below, or nothing
    QStringView
        screenPermissionRule; // why a permission may need a new start; a clause that may begin a sentence
    QStringView microphoneSettings;   // where the microphone's permission is given
    QStringView speechSettings;       // where speech recognition's permission is given
    QStringView dictationSettings;    // where a person chooses the language of dictation
    QStringView calendarSettings;     // where the calendar's permission is given
    QStringView calendarChooser;      // what to pick where events have no calendar to go to
    QStringView shortcutsPlace;       // where shortcuts are kept; follows "the"
    QStringView shortcutHung;         // what to do about one that doesn't end
    QStringView speechServersOwner;   // whose servers would hear what isn't recognised on the device
    QStringView secretStore;          // what keeps API keys
    QStringView secretStoreProgram;   // where a person looks into it
    QStringView unlockers;            // what a person shows that they are there with; follows "has no"
    QStringView unlockerSettings;     // where one is added
    QStringView keyGuard;             // what the key stands behind while the lock is on
    QStringView connectionLister;     // a command that lists what every program is connected to
    QStringView runtimeStopper;       // where a model runtime of the person's own is quit
    QStringView searcher;             // who looks around the local network; begins a sentence
    QStringView searchMissing;        // why it can't, when nothing on it can
    QStringView snapshots;            // copies of the disk that the desktop makes; begins a sentence
    QStringView terminal;             // where commands are typed; follows "open"
    QStringView ollamaListensToAll;   // a command that lets an Ollama answer other computers
    QStringView ollamaWithoutService; // and what to do where that command has no service to act on

    static const DesktopWords original;
    static const DesktopWords freedesktop;

    // The desktop this build is for.
    [[nodiscard]] static const DesktopWords &here();
};

} // namespace morvane
