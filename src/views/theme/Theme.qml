pragma Singleton

import QtQuick

// Every colour, size, distance and duration of the window. The window sets the first nine.
QtObject {
    property bool dark: false
    property string backdrop // of the gallery appearance, which is dark; empty for none
    property string desktopAccent // stands out from every ground; empty for none
    property bool highContrast: false
    property real textScale: 1 // zoomed
    property real zoom: 1 // of distances and of what isn't text
    property bool reduceAnimation: false
    property real pixelRatio: 1 // of the screen: device pixels in a logical one
    property bool rings: false // on what has the focus, controls aside: Tab led there

    readonly property bool gallery: backdrop.length > 0
    readonly property var backdropColors: ({
        dusk: ["#241A40", "#4F2943"],
        lagoon: ["#0B2030", "#144447"],
        forest: ["#0F2118", "#25472F"],
        ember: ["#24120F", "#5A2818"],
        night: ["#0C0F22", "#262B5C"]
    })

    // Colours. Text stands at 4.5:1 or better on each of the grounds, outlines of controls at 3:1.
    readonly property color page: gallery ? backdropColors[backdrop][0] : dark ? "#17171B" : "#FAFAFB"
    readonly property color sidebar: gallery ? "#8C0C0C12" : dark ? "#111114" : "#F1F1F4"
    readonly property color card: gallery ? "#B314141C" : dark ? "#202026" : "#FFFFFF"
    readonly property color floating: gallery ? "#1D1C27" : card // never shows what is below
    readonly property color bubble: gallery ? "#33FFFFFF" : dark ? "#2B2C37" : "#E9EAF2"
    readonly property color code: gallery ? "#B30E0E14" : dark ? "#1C1C22" : "#F3F3F6"
    readonly property color text: highContrast ? (dark ? "#FFFFFF" : "#000000") : dark ? "#ECECF1" : "#1B1B21"
    readonly property color secondary: highContrast ? (dark ? "#E6E6EE" : "#2A2A33") : gallery ? "#D2D2DE" : dark ? "#A9A9B7" : "#585866"
    readonly property color disabled: highContrast ? (dark ? "#BDBDCA" : "#55555F") : gallery ? "#B4B4C2" : dark ? "#8A8A99" : "#767684"
    readonly property color hairline: highContrast ? outline : gallery ? "#2EFFFFFF" : dark ? "#33333D" : "#DEDEE6"
    readonly property color outline: highContrast ? (dark ? "#C6C6D4" : "#4A4A55") : gallery ? "#A0A0B4" : dark ? "#76768D" : "#85859A"
    readonly property color accent: desktopAccent.length > 0 ? desktopAccent : highContrast ? (dark ? "#C9CFFF" : "#2B36A0") : dark ? "#A7B0FF" : "#4350C8"
    readonly property color accentInk: dark ? "#17171B" : "#FFFFFF"
    readonly property color success: dark ? "#6CCB93" : "#1B7340"
    readonly property color warning: dark ? "#E3B341" : "#875300"
    readonly property color danger: dark ? "#FF8A80" : "#B3261E"
    readonly property color ghost: dark ? "#C3B0FF" : "#5F4AA0"
    readonly property color ghostWash: dark ? "#24C3B0FF" : "#1A5F4AA0" // below what stands in the ghost's colour
    readonly property color ghostInk: dark ? "#241B3F" : "#FFFFFF"
    readonly property color scrim: dark ? "#A0000000" : "#66101018"

    // Washes over whatever is below: a pointer over a control, a control held down, the row of the open chat.
    readonly property color noWash: dark ? "#00FFFFFF" : "#00101030"
    readonly property color hoverWash: highContrast ? pressWash : dark ? "#12FFFFFF" : "#0A101030"
    readonly property color pressWash: dark ? "#20FFFFFF" : "#16101030"
    readonly property color currentWash: dark ? "#1AFFFFFF" : "#12101030"
    readonly property color selection: dark ? "#4B5296" : "#C9CEF6"

    // Code, by kind of word. At 4.5:1 on the ground of code and on those of finds as well.
    readonly property var codeColors: ({
        keyword: dark ? "#CFA8FF" : "#7A2FA8",
        type: dark ? "#6FD0DE" : "#0B5C70",
        name: dark ? "#9DBBFF" : "#2348B0",
        string: dark ? "#98D58E" : "#1B6434",
        number: dark ? "#F0B27A" : "#8C4300",
        comment: dark ? "#A9A9B7" : "#5A606C"
    })

    // The grounds of found words: text of any colour stands on them.
    readonly property color codeWash: dark ? "#0DFFFFFF" : "#0A101030" // of code in a line, which finds show through
    readonly property color find: dark ? "#3A3212" : "#FFE9A3"
    readonly property color currentFind: dark ? "#443A12" : "#FFE08A"

    // Type, in logical pixels of the system font.
    readonly property int bodySize: Math.round(15 * textScale)
    readonly property int bodyLine: Math.round(23 * textScale)
    readonly property int smallSize: Math.round(13 * textScale)
    readonly property int smallLine: Math.round(18 * textScale)
    readonly property int captionSize: Math.round(12 * textScale)
    readonly property int captionLine: Math.round(16 * textScale)
    readonly property int titleSize: Math.round(20 * textScale)
    readonly property int titleLine: Math.round(26 * textScale)
    readonly property int subtitleSize: Math.round(17 * textScale)
    readonly property int codeSize: Math.round(13.5 * textScale)
    readonly property int codeLine: Math.round(20 * textScale)
    readonly property int tableSize: Math.round(14 * textScale)
    readonly property int headingSize: Math.round(26 * textScale)
    readonly property int headingLine: Math.round(32 * textScale)
    readonly property string monoFamily: "monospace"

    // Distances on a grid of 4.
    readonly property int gap4: Math.round(4 * zoom)
    readonly property int gap8: Math.round(8 * zoom)
    readonly property int gap12: Math.round(12 * zoom)
    readonly property int gap16: Math.round(16 * zoom)
    readonly property int gap24: Math.round(24 * zoom)
    readonly property int gap32: Math.round(32 * zoom)

    readonly property int controlRadius: Math.round(8 * zoom)
    readonly property int panelRadius: Math.round(12 * zoom)
    readonly property int cardRadius: Math.round(16 * zoom)
    readonly property int bubbleRadius: Math.round(18 * zoom)
    readonly property int composerRadius: Math.round(24 * zoom)

    readonly property int controlHeight: Math.round(32 * Math.max(zoom, textScale))
    readonly property int rowHeight: Math.round(36 * Math.max(zoom, textScale))
    readonly property int columnWidth: Math.round(720 * zoom)
    readonly property int wideColumnWidth: Math.round(880 * zoom) // of tables and charts

    // Lines of whole device pixels: others are a pixel wider or narrower by where they lie, where the processor draws.
    readonly property real lineWidth: whole(1)
    readonly property real focusWidth: whole(highContrast ? 3 : 2)

    // The height of a line of text of that size.
    function lineOf(size: int): int {
        return size === bodySize ? bodyLine : size === smallSize ? smallLine : size === captionSize ? captionLine
            : size === titleSize ? titleLine : size === headingSize ? headingLine : Math.round(size * 1.4);
    }
    function whole(width: real): real {
        return Math.max(1, Math.round(width * pixelRatio)) / pixelRatio;
    }

    // Motion, in milliseconds; a reduced one keeps short fades and nothing that moves.
    readonly property int press: reduceAnimation ? 0 : 100
    readonly property int wash: reduceAnimation ? 80 : 100 // nothing moves in a change of colour
    readonly property int fade: reduceAnimation ? 80 : 150
    readonly property int expand: reduceAnimation ? 0 : 200
    readonly property int panel: reduceAnimation ? 0 : 250
}
