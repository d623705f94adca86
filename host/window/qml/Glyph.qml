// SPDX-License-Identifier: MIT
import QtQuick

// A small sign of the window, crisp at every scale; one that points along the text is turned around where that runs
// from right to left.
Image {
    id: glyph

    required property string name
    property color color: Theme.faint
    property real extent: 16
    property bool pointing: true

    width: extent
    height: extent
    sourceSize: Qt.size(Math.round(extent * Screen.devicePixelRatio), Math.round(extent * Screen.devicePixelRatio))
    source: "image://glyph/" + name + "/" + Theme.hex(color)
    mirror: pointing && LayoutMirroring.enabled
    Accessible.ignored: true
}
