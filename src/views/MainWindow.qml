import QtQuick
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// The main window: what stands in it is put there by the application, and taken out while it is locked.
T.ApplicationWindow {
    id: root

    required property ShellViewModel shell
    required property SettingsStore settings
    required property AppLockViewModel lock
    required property PrivacyViewModel privacy

    title: shell.productName
    color: Theme.page

    FirstSize {
        window: root
        best: Qt.size(1100, 760)
        least: Qt.size(420, 520)
    }
    Binding { target: Theme; property: "dark"; value: root.shell.dark }
    Binding {
        target: Theme
        property: "backdrop"
        value: root.settings.appearance === "gallery" ? root.shell.backdrop : ""
    }
    Binding { target: Theme; property: "desktopAccent"; value: root.shell.accent }
    Binding { target: Theme; property: "highContrast"; value: root.shell.highContrast }
    Binding { target: Theme; property: "textScale"; value: root.shell.textScale }
    Binding { target: Theme; property: "zoom"; value: root.shell.zoom / 100 }
    Binding { target: Theme; property: "pixelRatio"; value: root.contentItem.Screen.devicePixelRatio }
    Binding { target: Theme; property: "reduceAnimation"; value: root.shell.reduceAnimation }

    Later {
        anchors.fill: parent
        part: "Backdrop.qml" // its large circles take megabytes, hidden ones too
        wanted: Theme.gallery
    }
    Later {
        anchors.fill: parent
        z: 1
        visible: root.lock.isLocked
        focus: visible
        part: "LockCurtain.qml"
        given: ({ lock: root.lock, privacy: root.privacy, shell: root.shell })
        wanted: root.lock.isEnabled || root.lock.isLocked // made before it falls
    }
    Later {
        part: "ShellQuestion.qml"
        given: ({ shell: root.shell })
        wanted: root.shell.questionTitle.length > 0
    }
}
