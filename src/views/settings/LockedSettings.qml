import Morvane
import Morvane.ViewModels

// The settings while it is locked. What is sealed isn't handed in, so that no page can show or change it.
SettingsFrame {
    id: root

    required property SettingsStore settings
    required property GlobalShortcutViewModel chatKey
    required property GlobalShortcutViewModel talkKey
    required property PrivacyViewModel privacy
    required property SpeakingViewModel speaking
    required property MicrophoneViewModel microphone
    required property RecognitionViewModel recognition

    page: "privacy"

    SealedPage {
        title: qsTr("AI")
        reason: qsTr("Where replies come from, with its addresses and keys, waits until you unlock.")
        onUnlockChosen: root.close()
    }
    SealedPage {
        title: qsTr("Instructions")
        reason: qsTr("Your instructions are sealed until you unlock.")
        onUnlockChosen: root.close()
    }
    SealedPage {
        title: qsTr("Abilities")
        reason: qsTr("What the model may do, with your search key, calendars and shortcuts, waits until you unlock.")
        onUnlockChosen: root.close()
    }
    SealedPage {
        title: qsTr("Memory")
        reason: qsTr("The notes about you are sealed until you unlock.")
        onUnlockChosen: root.close()
    }
    LockedPrivacyPage {
        privacy: root.privacy
        about: root.about
        shell: root.shell
        onUnlockChosen: root.close()
    }
    VoicePage {
        speaking: root.speaking
        microphone: root.microphone
        recognition: root.recognition
        settings: root.settings
        talkKey: root.talkKey
        shown: root.visible && root.page === "voice"
    }
    KeyboardPage {
        chatKey: root.chatKey
        talkKey: root.talkKey
    }
    AppearancePage {
        settings: root.settings
        shell: root.shell
    }
    SealedPage {
        title: qsTr("Proof")
        reason: qsTr("Where your answers came from waits until you unlock.")
        onUnlockChosen: root.close()
    }
    SealedPage {
        title: qsTr("Network")
        reason: qsTr("Which hosts were spoken to waits until you unlock.")
        onUnlockChosen: root.close()
    }
    AboutPage {
        about: root.about
        shell: root.shell
        shown: root.visible && root.page === "about"
        keepsReports: true
    }
}
