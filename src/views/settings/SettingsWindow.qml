import Morvane
import Morvane.ViewModels

// Settings in a window of their own. Changes apply at once, so there is nothing to save or to cancel.
SettingsFrame {
    id: root

    required property SettingsModels models

    function focusReplyLimit() {
        root.page = "ai";
        ai.focusReplyLimit();
    }

    shell: models.shell
    about: models.about
    onVisibleChanged: if (visible) root.models.localModel.look()

    AIPage {
        id: ai

        ai: root.models.ai
        settings: root.models.store
        privateCloud: root.models.privateCloud
        local: root.models.localModel
        nearby: root.models.nearby
        shell: root.shell
    }
    InstructionsPage { instructions: root.models.instructions }
    AbilitiesPage {
        abilities: root.models.abilities
        settings: root.models.store
        searchKey: root.models.searchKey
        calendars: root.models.calendars
        shortcuts: root.models.shortcuts
        shell: root.shell
        shown: root.visible && (root.page === "abilities" || root.searches)
        screenTest: root.models.screenTest
    }
    MemoryPage {
        memory: root.models.memory
        settings: root.models.store
    }
    PrivacyPage {
        lock: root.models.lock
        privacy: root.models.privacy
        about: root.about
        settings: root.models.store
        shell: root.shell
    }
    VoicePage {
        speaking: root.models.speaking
        microphone: root.models.microphone
        recognition: root.models.recognition
        settings: root.models.store
        talkKey: root.models.talkKey
        shown: root.visible && root.page === "voice"
        sought: root.visible && root.searches
    }
    KeyboardPage {
        chatKey: root.models.chatKey
        talkKey: root.models.talkKey
    }
    AppearancePage {
        settings: root.models.store
        shell: root.shell
    }
    ProofPage {
        ledger: root.models.proofLedger
        shell: root.shell
        shown: root.visible && root.page === "proof"
    }
    NetworkPage {
        ledger: root.models.networkLedger
        productName: root.shell.productName
        shown: root.visible && root.page === "network"
    }
    AboutPage {
        about: root.about
        shell: root.shell
        shown: root.visible && (root.page === "about" || root.searches)
    }
}
