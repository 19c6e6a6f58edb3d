import QtQuick
import Morvane

// A setting that is on or off.
SettingsRow {
    id: root

    property bool checked: false

    signal toggled(bool on)

    ToggleSwitch {
        objectName: root.objectName + ".switch"
        text: root.title
        enabled: root.enabled
        checked: root.checked
        onToggled: {
            root.toggled(checked);
            checked = Qt.binding(() => root.checked); // a wish that was refused isn't shown as granted
        }
    }
}
