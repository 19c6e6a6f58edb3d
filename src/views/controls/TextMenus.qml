import QtQuick
import Morvane

// The menu of every text in a window, by the pointer and by the keyboard. Whoever shows messages has another for those.
MenuKeeper {
    id: root

    signal messageMenuAsked(point place)

    function openFieldMenu(place: point) {
        menu.wanted = true;
        (menu.item as FieldMenu).popup(root, place.x, place.y);
    }

    onAsked: place => root.row ? root.messageMenuAsked(place) : root.openFieldMenu(place)

    Later {
        id: menu

        part: "controls/FieldMenu.qml"
        given: ({ keeper: root })
    }
}
