import QtQuick
import QtQuick.Layouts
import Morvane

// Code as it was written: no wrapping, its language and a way to copy it above. A long one folds, unless it was
// watched as it came.
Rectangle {
    id: root

    required property var content
    required property string plainText
    property bool finished: false
    property bool foldable: true
    property bool unfolded: false
    readonly property int shownWhenFolded: 24
    readonly property bool folds: finished && foldable && content.lines > shownWhenFolded
    readonly property bool folded: folds && !unfolded
    property real foldedHeight: 0 // scripts that need taller lines get them

    signal copyAsked(string text)

    objectName: "code"
    width: parent?.width ?? 0
    implicitHeight: parts.implicitHeight + (folds ? 0 : Theme.gap12)
    radius: Theme.panelRadius
    color: Theme.code
    border.width: Theme.lineWidth
    border.color: Theme.hairline

    Item { // beside the view that the code scrolls in, which would cut its ring off
        x: view.x
        y: view.y
        width: view.width
        height: view.height

        FocusRing { visible: code.activeFocus && Theme.rings }
    }
    ColumnLayout {
        id: parts

        width: parent.width
        spacing: 0

        RowLayout {
            Layout.fillWidth: true
            Layout.preferredHeight: 32 * Theme.zoom
            Layout.leftMargin: Theme.gap16
            Layout.rightMargin: Theme.gap4

            CaptionText {
                Layout.fillWidth: true
                text: root.content.language.length > 0 ? root.content.language : qsTr("Code")
                elide: Text.ElideRight
                wrapMode: Text.NoWrap
                maximumLineCount: 1
            }
            CopyButton {
                objectName: "copyCode"
                subject: qsTr("the code")
                onClicked: root.copyAsked(root.plainText)
            }
        }
        SidewaysView {
            id: view

            Layout.fillWidth: true
            sidePadding: Theme.gap16

            Fold {
                id: fold

                implicitWidth: code.width
                least: root.folds ? root.foldedHeight : 0
                open: !root.folded

                SelectableText {
                    id: code

                    objectName: "codeText"
                    width: Math.max(implicitWidth, view.width - 2 * Theme.gap16)
                    shownText: root.folded && !fold.pressed
                        ? root.content.code.split("\n", root.shownWhenFolded).join("\n") : root.content.code
                    lineHeight: Theme.codeLine
                    wrapMode: TextEdit.NoWrap
                    font.family: Theme.monoFamily
                    font.pixelSize: Theme.codeSize
                    onHeightChanged: if (root.folded && !fold.pressed) root.foldedHeight = height
                    onCursorRectangleChanged: if (activeFocus) view.reveal(cursorRectangle.x - Theme.gap16,
                                                                           cursorRectangle.x + 2 * Theme.gap16)
                    Accessible.name: qsTr("Code: %1").arg(root.plainText)

                    CodeColours {
                        document: code.textDocument
                        language: root.content.language
                        colors: Theme.codeColors
                    }
                }
            }
        }
        PushButton {
            objectName: "unfoldCode"
            Layout.alignment: Qt.AlignHCenter
            Layout.topMargin: Theme.gap8
            Layout.bottomMargin: Theme.gap8
            visible: root.folds
            text: root.folded ? qsTr("Show all %1 lines").arg(root.content.lines) : qsTr("Show less")
            onClicked: {
                fold.press();
                root.unfolded = !root.unfolded;
            }
        }
    }
}
