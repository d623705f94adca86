// SPDX-License-Identifier: MIT
import QtQuick

Rectangle {
    property real gap: 2

    anchors.fill: parent
    anchors.margins: gap
    radius: Theme.corner - gap
    color: "transparent"
    border.width: 2
    border.color: Theme.accent
}
