import QtQuick.Templates as T
import Morvane

// The name of a button while the pointer rests on it.
Hint {
    required property T.AbstractButton button

    text: button.text
    visible: button.hovered && button.text.length > 0 && !button.down && !((button as IconButton)?.quiet ?? false)
}
