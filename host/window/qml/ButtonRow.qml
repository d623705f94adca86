// SPDX-License-Identifier: MIT
import QtQuick

ListRow {
    id: row

    required property bool checked
    readonly property bool accessibleControl: true

    trailingWidth: checked ? mark.width : 0
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

    Accessible.role: Accessible.Button
    Accessible.name: label
    Accessible.focusable: rowEnabled
    Accessible.checkable: checked
    Accessible.checked: checked
    Accessible.onPressAction: tapped()
}
