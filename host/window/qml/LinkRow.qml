// SPDX-License-Identifier: MIT
import QtQuick

ListRow {
    id: row

    required property string opens
    readonly property bool accessibleControl: true

    selected: list && opens !== "" && opens === list.detailClass
    trailingWidth: chevron.width
    trailing: Glyph {
        id: chevron

        anchors.verticalCenter: parent.verticalCenter
        anchors.right: parent.right
        anchors.rightMargin: -4
        name: "chevron"
    }

    onTapped: list.rows.activate(index)

    Accessible.role: Accessible.Button
    Accessible.name: label
    Accessible.focusable: rowEnabled
    Accessible.selectable: list && list.detailClass !== ""
    Accessible.selected: selected
    Accessible.onPressAction: tapped()
}
