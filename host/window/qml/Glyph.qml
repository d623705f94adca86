// SPDX-License-Identifier: MIT
import QtQuick

// A small sign of the window, crisp at every scale and turned around where the text runs from right to left.
Image {
    id: glyph

    required property string name
    property color color: Theme.faint
    property real extent: 16

    width: extent
    height: extent
    sourceSize: Qt.size(Math.round(extent * Screen.devicePixelRatio), Math.round(extent * Screen.devicePixelRatio))
    source: "image://glyph/" + name + "/" + Theme.hex(color)
    mirror: LayoutMirroring.enabled
    Accessible.ignored: true
}
