import QtQuick
import Morvane

// What the person wrote, of which a long one shows its beginning. All of it can be selected and copied: the rest
// is only out of sight, and opens when the keyboard or a selection goes there.
Fold {
    id: root

    required property string shownText
    required property real widest
    property bool unfolded: false
    readonly property int lineCount: words.lineCount
    readonly property bool folds: lineCount > 16
    readonly property bool folded: folds && !unfolded
    readonly property alias hasFocus: words.activeFocus

    implicitWidth: words.width
    least: folds ? 12 * Theme.bodyLine : 0
    open: !folded

    SelectableText {
        id: words

        objectName: "ownWords"
        width: Math.min(root.widest, Math.ceil(implicitWidth))
        shownText: root.shownText
        Accessible.name: qsTr("You: %1").arg(root.shownText)
        onCursorRectangleChanged: if (activeFocus && root.folded && cursorRectangle.y >= root.height) root.unfolded = true
    }
}
