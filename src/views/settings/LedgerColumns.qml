import QtQuick
import Morvane

// Where a ledger's columns stand: by the width of the table alone, so that no row moves them. A narrow table
// leaves the traffic to the details of its rows.
QtObject {
    required property real width
    readonly property real scale: Theme.textScale

    readonly property bool showsTraffic: width >= 480 * scale
    readonly property real timeX: Theme.gap16
    readonly property real timeWidth: 60 * scale
    readonly property real placeX: timeX + timeWidth + Theme.gap12
    readonly property real placeWidth: (showsTraffic ? trafficX : outcomeX) - Theme.gap12 - placeX
    readonly property real trafficWidth: 136 * scale
    readonly property real trafficX: outcomeX - Theme.gap12 - trafficWidth
    readonly property real outcomeWidth: 112 * scale
    readonly property real outcomeX: markX - Theme.gap8 - outcomeWidth
    readonly property real markX: width - Theme.gap16 - 16 * Theme.zoom // of the sign that a row opens
}
