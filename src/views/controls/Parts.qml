pragma Singleton

import QtQuick

// Keeps the types of what was loaded late for as long as the window's engine is there. Newer engines let go of types
// that nothing uses just then, as after a lock, and no cast knows those that they load anew.
QtObject {
    id: root

    property var kept: ({})

    function keep(source: url) {
        if (!(source in root.kept))
            root.kept[source] = Qt.createComponent(source, Component.PreferSynchronous, root);
    }
}
