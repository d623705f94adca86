// SPDX-License-Identifier: MIT
import QtQuick

// A label and the title of the choice that is made; a tap opens the list of choices.
ListRow {
    id: row

    required property string text
    readonly property bool accessibleControl: true

    readonly property real textRoom: stacked ? room - chevron.width - 4 : besideRoom
    readonly property real besideRoom: Math.max(room * 0.4, room - 12 - labelLength.advanceWidth) - chevron.width - 4

    // Large texts would have to be broken within their words.
    stacked: Theme.textScale >= 1.5 && textLength.advanceWidth > besideRoom
    trailingWidth: chevron.width + (text === "" ? 0 : chosen.width + 4)
    trailingHeight: chosen.implicitHeight
    trailing: [
        PlainText {
            id: chosen

            anchors.verticalCenter: parent.verticalCenter
            anchors.right: chevron.left
            anchors.rightMargin: 4
            width: Math.min(Math.ceil(implicitWidth), row.textRoom)
            text: row.text
            color: Theme.quiet
            font.pixelSize: Theme.labelSize
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignRight
            Accessible.ignored: true
        },
        Glyph {
            id: chevron

            anchors.verticalCenter: parent.verticalCenter
            anchors.right: parent.right
            anchors.rightMargin: -4
            name: "chevron"
        },
        TextMetrics {
            id: labelLength

            font.pixelSize: Theme.labelSize
            text: row.label
        },
        TextMetrics {
            id: textLength

            font.pixelSize: Theme.labelSize
            text: row.text
        }
    ]

    about: text
    onTapped: list.rows.activate(index)

    Accessible.role: Accessible.Button
    Accessible.name: label
    Accessible.focusable: rowEnabled
    Accessible.onPressAction: tapped()
}
