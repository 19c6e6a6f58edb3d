import QtQuick
import Morvane

// Formatted words that can be selected and copied. A link says where it leads when the pointer or the cursor is
// on it, and asks to be opened when it is clicked, or by Return.
TextEdit {
    id: root

    required property var words // Prose
    property real lineHeight: Theme.bodyLine
    property bool growing: false
    property bool finished: !growing // nothing is added to its reply any more
    readonly property alias links: prose.links
    readonly property string plainText: words.plainText
    readonly property string focusedLink: activeFocus ? prose.linkAt(cursorPosition) : ""
    readonly property string pointedLink: hoveredLink.length > 0 ? hoveredLink : focusedLink
    readonly property point linkPlace: hoveredLink.length > 0 ? pointer.point.position
        : Qt.point(cursorRectangle.x, cursorRectangle.y)

    signal linkAsked(string address)

    readOnly: true
    selectByMouse: true
    selectByKeyboard: true
    cursorVisible: activeFocus
    activeFocusOnTab: root.words.hasLinks
    textFormat: TextEdit.PlainText
    wrapMode: TextEdit.Wrap
    color: Theme.text
    font.pixelSize: Theme.bodySize
    selectionColor: Theme.selection
    selectedTextColor: Theme.text

    Accessible.role: Accessible.StaticText
    Accessible.name: plainText
    Accessible.readOnly: true

    Keys.onReturnPressed: if (focusedLink.length > 0) linkAsked(focusedLink)
    onLinkActivated: link => linkAsked(link)

    ReadOnlyKeys { text: root }
    ProseDocument {
        id: prose

        document: root.textDocument
        prose: root.words
        growing: root.growing && root.selectionStart === root.selectionEnd
        width: root.width
        lineHeight: root.lineHeight
        linkColor: Theme.accent
        codeGround: Theme.codeWash
        codeFamily: Theme.monoFamily
    }
    HoverHandler {
        id: pointer

        cursorShape: root.hoveredLink.length > 0 ? Qt.PointingHandCursor : Qt.IBeamCursor
    }
    FocusRing {
        anchors.margins: -Theme.gap4
        visible: root.activeFocus && Theme.rings
    }
    Later {
        part: "blocks/LinkHint.qml"
        given: ({ source: root })
        wanted: root.pointedLink.length > 0
    }
    Later {
        part: "blocks/TextLinks.qml"
        given: ({ source: root })
        wanted: root.finished && root.words.hasLinks
    }
}
