import QtQuick
import Morvane

// A part of the window that is made when it is first wanted and stays from then on. Named by its place, so that
// until then neither its objects nor its types are loaded.
Loader {
    id: root

    required property string part // "chat/ErrorNotice.qml"
    property var given: ({}) // the properties it requires
    property bool wanted: false
    property bool placed: false

    function make() {
        if (root.placed && root.wanted && root.status === Loader.Null)
            root.setSource("../" + root.part, root.given);
    }

    onWantedChanged: root.make()
    onLoaded: Parts.keep(root.source)
    Component.onCompleted: {
        root.placed = true;
        root.make();
    }
}
