// SPDX-License-Identifier: MIT
import QtQuick

// A row of a kind that the window does not know how to draw: there, and plainly not usable.
ListRow {
    id: row

    required property string kind
    readonly property bool accessibleControl: true

    pressable: false
    trailingWidth: kindText.implicitWidth
    trailing: PlainText {
        id: kindText

        anchors.verticalCenter: parent.verticalCenter
        text: row.kind
        color: Theme.danger
        font.pixelSize: Theme.smallSize
        font.italic: true
        Accessible.ignored: true
    }

    about: kind
    Accessible.role: Accessible.StaticText
    Accessible.focusable: false
    Accessible.name: label
}
