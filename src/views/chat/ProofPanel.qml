import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// Where one answer came from: the steps of its proof as they go, then all that is kept of it.
FocusScope {
    id: root

    required property ProofPanelViewModel proof
    required property ShellViewModel shell
    readonly property Item home: closeButton

    signal closed()

    function scrollBy(distance: real) {
        view.contentY = Math.max(0, Math.min(view.contentY + distance, view.contentHeight - view.height));
    }

    objectName: "proofPanel"

    Accessible.role: Accessible.Pane
    Accessible.name: title.text
    Keys.onEscapePressed: root.closed()
    Keys.onUpPressed: root.scrollBy(-48)
    Keys.onDownPressed: root.scrollBy(48)

    ColumnLayout {
        anchors.fill: parent
        anchors.topMargin: Theme.gap8
        spacing: Theme.gap8

        RowLayout {
            Layout.leftMargin: Theme.gap16
            Layout.rightMargin: Theme.gap8

            PlainText {
                id: title

                Layout.fillWidth: true
                text: qsTr("Where this answer came from")
                font.weight: Font.DemiBold
                elide: Text.ElideRight
                wrapMode: Text.NoWrap
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }
            IconButton {
                id: closeButton

                objectName: "closeProof"
                focus: true
                text: qsTr("Close")
                glyph: "close"
                onClicked: root.closed()
            }
        }
        Flickable {
            id: view

            Layout.fillWidth: true
            Layout.fillHeight: true
            contentHeight: content.height + Theme.gap16
            boundsBehavior: Flickable.StopAtBounds
            clip: true

            T.ScrollBar.vertical: ScrollHandle {}

            Column {
                id: content

                x: Theme.gap16
                width: view.width - 2 * Theme.gap16
                spacing: Theme.gap12

                EndMark {
                    objectName: "proofResult"
                    width: parent.width
                    glyph: root.proof.mark === "verified" ? "sealed" : root.proof.mark === "refused" ? "warning"
                        : root.proof.mark === "running" ? "spark" : "pin"
                    ink: root.proof.mark === "verified" ? Theme.success : root.proof.mark === "refused" ? Theme.warning : Theme.text
                    text: root.proof.heading
                }
                SmallText {
                    objectName: "proofRemark"
                    width: parent.width
                    visible: text.length > 0
                    text: root.proof.remark
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                }
                ProofSteps {
                    width: parent.width
                    visible: steps.length > 0
                    steps: root.proof.steps
                }
                ProofFacts {
                    width: parent.width
                    visible: facts.length > 0
                    facts: root.proof.facts
                    limits: root.proof.limits
                    onCopyAsked: text => root.shell.copy(text)
                }
                ProofHeading {
                    visible: former.visible
                    text: qsTr("The private cloud, which was asked first")
                }
                ProofFacts {
                    id: former

                    width: parent.width
                    visible: facts.length > 0
                    facts: root.proof.formerFacts
                    onCopyAsked: text => root.shell.copy(text)
                }
            }
        }
    }
    Connections {
        target: root.proof

        function onOpened() { view.contentY = 0; }
    }
}
