pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// A model on another computer: the computers that show themselves, a place that is typed, and what it answers.
ColumnLayout {
    id: root

    required property NearbyViewModel nearby

    signal copyAsked(string text)

    spacing: Theme.gap8
    onVisibleChanged: if (!visible) root.nearby.leave()

    RowLayout {
        Layout.fillWidth: true
        spacing: Theme.gap8

        Repeater {
            model: root.nearby.apps

            delegate: ChoiceButton {
                required property int index
                required property string modelData

                text: modelData
                autoExclusive: true
                checked: root.nearby.app === index
                onClicked: root.nearby.app = index
            }
        }
        Item { Layout.fillWidth: true }
        PushButton {
            objectName: "searchNetwork"
            enabled: !root.nearby.isSearching
            text: root.nearby.isSearching ? qsTr("Looking…") : qsTr("Look Around")
            onClicked: root.nearby.search()
        }
    }
    SmallText {
        objectName: "searchNotice"
        Layout.fillWidth: true
        visible: text.length > 0
        text: root.nearby.searchNotice
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
    Flow {
        Layout.fillWidth: true
        spacing: Theme.gap8

        Accessible.role: Accessible.List
        Accessible.name: qsTr("Computers nearby")

        Repeater {
            model: root.nearby.computers

            delegate: ComputerButton {
                id: computer

                required property int index

                chosen: root.nearby.place === computer.hostname
                onClicked: root.nearby.pick(computer.index)
            }
        }
    }
    RowLayout {
        Layout.fillWidth: true
        spacing: Theme.gap8

        TextBox {
            objectName: "nearbyPlace"
            Layout.fillWidth: true
            text: root.nearby.place
            placeholderText: qsTr("Name or address of the computer")
            inputMethodHints: Qt.ImhUrlCharactersOnly | Qt.ImhNoPredictiveText
            hasProblem: root.nearby.problem.length > 0
            Accessible.name: qsTr("Name or address of the computer")
            onTextEdited: root.nearby.place = text
            onAccepted: root.nearby.ask()
        }
        PushButton {
            objectName: "askNearby"
            enabled: !root.nearby.isAsking
            text: root.nearby.isAsking ? qsTr("Asking…") : qsTr("Ask for Models")
            onClicked: root.nearby.ask()
        }
    }
    SmallText {
        objectName: "nearbyProblem"
        Layout.fillWidth: true
        visible: text.length > 0
        text: root.nearby.problem
        color: Theme.danger
        Accessible.role: Accessible.Notification
        Accessible.name: text
    }
    NearbySteps {
        Layout.fillWidth: true
        visible: root.nearby.needsSteps
        nearby: root.nearby
        onCopyAsked: text => root.copyAsked(text)
    }
    SmallText {
        objectName: "nearbyTaken"
        Layout.fillWidth: true
        visible: text.length > 0
        text: root.nearby.taken
        color: Theme.success
        Accessible.role: Accessible.StatusBar
        Accessible.name: text
    }
    SmallText {
        visible: root.nearby.models.length > 0 && root.nearby.taken.length === 0
        text: qsTr("Choose the model that replies come from:")
    }
    Flow {
        Layout.fillWidth: true
        spacing: Theme.gap8

        Accessible.role: Accessible.List
        Accessible.name: qsTr("Models of the computer")

        Repeater {
            model: root.nearby.models

            delegate: PushButton {
                required property string modelData

                objectName: "nearbyModel"
                text: modelData
                onClicked: root.nearby.take(modelData)
            }
        }
    }
}
