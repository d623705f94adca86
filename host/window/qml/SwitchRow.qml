// SPDX-License-Identifier: MIT
import QtQuick

ListRow {
    id: row

    required property bool checked
    required property color tint
    readonly property bool accessibleControl: true

    pressable: false
    trailingWidth: toggle.width
    trailingHeight: toggle.height
    trailing: Toggle {
        id: toggle

        anchors.verticalCenter: parent.verticalCenter
        checked: row.checked
        tint: row.tint
    }

    onTapped: list.rows.activate(index)

    Accessible.role: Accessible.CheckBox
    Accessible.name: label
    Accessible.focusable: rowEnabled
    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.onPressAction: tapped()
}
