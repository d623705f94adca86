// SPDX-License-Identifier: MIT
import QtQuick

// A choice of a list; the one that is made carries the mark.
ListRow {
    id: row

    required property bool checked
    readonly property bool accessibleControl: true

    trailingWidth: mark.width
    trailing: Glyph {
        id: mark

        anchors.verticalCenter: parent.verticalCenter
        visible: row.checked
        name: "check"
        color: Theme.accent
        extent: 18
        pointing: false
    }

    onTapped: list.rows.activate(index)

    Accessible.role: Accessible.RadioButton
    Accessible.name: label
    Accessible.focusable: rowEnabled
    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.onPressAction: tapped()
}
