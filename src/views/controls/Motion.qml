import QtQuick

// A change that is seen to happen. It slows down towards its end and never goes past it.
NumberAnimation {
    easing.type: Easing.OutCubic
}
