import QtQuick
import Morvane
import Morvane.ViewModels

// The windows beside the main one: Settings and the first steps. Each is made when it is first asked for.
Item {
    id: root

    required property SettingsModels models
    required property CompanionViewModel companion

    signal dismissed() // none of them has the keyboard any more

    function openSettings() {
        if (!settings.item)
            settings.setSource("settings/SettingsWindow.qml", { models: root.models });
        root.bringUp(settings.item as SettingsWindow);
    }
    function openSettingsAt(page: string) {
        root.openSettings();
        (settings.item as SettingsWindow).page = page;
    }
    // The page that Settings are open at; empty where they aren't.
    function settingsPage(): string {
        const opened = settings.item as SettingsWindow;
        return opened?.visible ? opened.page : "";
    }
    function openWelcome() {
        if (!welcome.item)
            welcome.setSource("welcome/WelcomeWindow.qml", { models: root.models, companion: root.companion });
        root.bringUp(welcome.item as WelcomeWindow);
    }
    function reportProblem() {
        root.openSettingsAt("about");
        root.models.about.reportProblem();
    }
    function bringUp(opened: Window) {
        opened.show();
        opened.raise();
        opened.requestActivate();
    }
    function leaveSettings() {
        const steps = welcome.item as WelcomeWindow;
        if (steps)
            return steps.requestActivate(); // it led there
        Window.window?.requestActivate();
        root.dismissed();
    }
    function leaveWelcome() {
        welcome.source = "";
        root.models.shell.welcomeLeft();
    }

    Loader {
        id: settings

        onLoaded: (item as SettingsWindow).left.connect(root.leaveSettings)
    }
    Loader {
        id: welcome

        onLoaded: {
            const opened = item as WelcomeWindow;
            opened.left.connect(() => Qt.callLater(root.leaveWelcome));
            opened.ledgerChosen.connect(() => root.openSettingsAt("network"));
        }
    }
    Connections {
        target: root.models.about

        function onPageRequested() { root.openSettingsAt("about"); }
    }
    Connections {
        target: root.models.shell

        function onWelcomeRequested() { root.openWelcome(); }
        function onSettingsRequested() { root.openSettings(); }
        function onVoiceSettingsRequested() { root.openSettingsAt("voice"); }
        function onAbilitiesRequested() { root.openSettingsAt("abilities"); }
        function onKeyboardSettingsRequested() { root.openSettingsAt("keyboard"); }
        function onReplyLimitRequested() {
            root.openSettings();
            (settings.item as SettingsWindow).focusReplyLimit();
        }
    }
}
