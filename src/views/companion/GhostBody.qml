import QtQuick

// The ghost without a face, as shapes on a square of 48 units.
QtObject {
    id: root

    property color skin
    readonly property string shapes: `
        <defs>
            <linearGradient id="cloth" gradientUnits="userSpaceOnUse" x1="14" y1="6" x2="34" y2="44">
                <stop offset="0" stop-color="${Qt.lighter(root.skin, 1.18)}"/>
                <stop offset="1" stop-color="${root.skin}"/>
            </linearGradient>
        </defs>
        <path fill="url(#cloth)" d="${root.outline}"/>
        <path fill="none" stroke="#ffffff" stroke-opacity="0.35" stroke-width="1.6" stroke-linecap="round"
              d="${root.shine}"/>`

    readonly property string outline: "M9 42.5V22a15 15 0 0 1 30 0v20.5c0 1.3-1.5 2-2.5 1.2L33 40.8a1.6 1.6 0 0 0-2 0l-3 2.5a1.6 1.6 0 0 1-2 0l-1-.8a1.6 1.6 0 0 0-2 0l-1 .8a1.6 1.6 0 0 1-2 0l-3-2.5a1.6 1.6 0 0 0-2 0l-3.5 2.9c-1 .8-2.5.1-2.5-1.2z"
    readonly property string shine: "M12.6 22.5a11.4 11.4 0 0 1 4.2-8.8" // a little light on the left shoulder
}
