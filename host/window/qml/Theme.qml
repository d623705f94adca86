// SPDX-License-Identifier: MIT
pragma Singleton

import QtQuick

// The look of the window: colours, sizes in points, times in milliseconds.
QtObject {
    property real textScale: 1
    property bool reducedMotion: false
    // Nothing that changes now moves.
    property bool still: false

    readonly property color ground: "#eef2f6"
    readonly property color card: "#ffffff"
    readonly property color pressed: "#e4ebf1"
    readonly property color selected: "#d5e9f4"
    readonly property color hairline: "#e0e6ec"
    readonly property color title: "#162433"
    readonly property color quiet: "#566575"
    readonly property color faint: "#9aa8b5"
    readonly property color accent: "#0c6f9f"
    readonly property color switchOff: "#b6c1cb"
    readonly property color danger: "#c22f25"
    readonly property color trouble: "#fff4d6"
    readonly property color troubleText: "#5c4300"

    readonly property real inset: 16
    // From this width on the list of pages stands beside the page.
    readonly property real columnsFrom: 700
    readonly property real columnWidth: 680
    readonly property real corner: 12
    readonly property real rowHeight: 50
    readonly property real target: 44
    readonly property real iconSize: 29
    readonly property real iconGap: 14

    readonly property int labelSize: text(16)
    readonly property int titleSize: text(17)
    readonly property int smallSize: text(13)
    // A bar has room for so much; it grows less than the page.
    readonly property int barSize: Math.round(17 * Math.min(textScale, 1.4))

    readonly property int slide: reducedMotion ? 0 : 320
    readonly property int move: reducedMotion || still ? 0 : 260
    readonly property int quick: reducedMotion || still ? 0 : 160

    function text(points) {
        return Math.round(points * textScale);
    }

    // Where the column of groups begins in a window of a width: it never grows wider than is pleasant to read.
    function sideInset(width) {
        return Math.max(inset, Math.round((width - columnWidth) / 2));
    }

    // A colour as the glyph addresses have it.
    function hex(color) {
        return color.toString().slice(-6);
    }
}
