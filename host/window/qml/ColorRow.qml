// SPDX-License-Identifier: MIT
import QtQuick

// A button with the colour that it changes at its right.
ListRow {
    id: row

    required property color swatch
    readonly property bool accessibleControl: true

    trailingWidth: picture.width
    trailingHeight: picture.height
    trailing: Image {
        id: picture

        anchors.verticalCenter: parent.verticalCenter
        width: 30
        height: 30
        // One pixel of the picture for one of the screen.
        sourceSize: Qt.size(width * Screen.devicePixelRatio, height * Screen.devicePixelRatio)
        smooth: false
        source: "image://swatch/" + Theme.hex(row.swatch)
        Accessible.ignored: true

        // So that a colour near that of the card has an edge.
        Rectangle {
            anchors.fill: parent
            radius: width / 2
            color: "transparent"
            border.width: 1
            border.color: "#1f162433"
        }
    }

    about: "#" + Theme.hex(swatch)
    onTapped: list.rows.activate(index)

    Accessible.role: Accessible.Button
    Accessible.name: label
    Accessible.focusable: rowEnabled
    Accessible.onPressAction: tapped()
}
