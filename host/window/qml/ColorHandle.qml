// SPDX-License-Identifier: MIT
import QtQuick

// What is taken hold of in the colour dialog: a ring around the colour beneath it.
Rectangle {
    id: handle

    property bool focusVisible: false

    width: 28
    height: 28
    radius: width / 2
    border.width: 3
    border.color: "#ffffff"

    Rectangle {
        anchors.fill: parent
        anchors.margins: -1
        radius: width / 2
        color: "transparent"
        border.width: 1
        border.color: "#40162433"
    }
    Rectangle {
        visible: handle.focusVisible
        anchors.fill: parent
        anchors.margins: -4
        radius: width / 2
        color: "transparent"
        border.width: 2
        border.color: Theme.accent
    }
}
